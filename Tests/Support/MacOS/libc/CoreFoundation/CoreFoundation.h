/* The umbrella: that of the Swift toolchain also includes what is made for the toolchain alone. */

#ifndef OPTRELLA_STANDIN_COREFOUNDATION_H
#define OPTRELLA_STANDIN_COREFOUNDATION_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFError.h>
#include <CoreFoundation/CFRunLoop.h>
#include <CoreFoundation/CFString.h>

#endif
