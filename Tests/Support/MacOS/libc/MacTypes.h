#ifndef OPTRELLA_STANDIN_MACTYPES_H
#define OPTRELLA_STANDIN_MACTYPES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define __MACTYPES__
typedef unsigned char Boolean;
typedef unsigned char UInt8;
typedef signed char SInt8;
typedef unsigned short UInt16;
typedef signed short SInt16;
typedef unsigned int UInt32;
typedef signed int SInt32;
typedef unsigned long long UInt64;
typedef signed long long SInt64;
typedef SInt32 OSStatus;
typedef SInt16 OSErr;
typedef float Float32;
typedef double Float64;
typedef UInt16 UniChar;
typedef unsigned long UniCharCount;
typedef unsigned char* StringPtr;
typedef const unsigned char* ConstStringPtr;
typedef unsigned char Str255[256];
typedef const unsigned char* ConstStr255Param;
typedef SInt16 RegionCode;
typedef SInt16 LangCode;
typedef SInt16 ScriptCode;
typedef UInt32 FourCharCode;
typedef FourCharCode OSType;
typedef UInt8 Byte;
typedef SInt8 SignedByte;
typedef UInt32 UTF32Char;
typedef UInt16 UTF16Char;
typedef UInt8 UTF8Char;

#ifdef __cplusplus
}
#endif

#endif
