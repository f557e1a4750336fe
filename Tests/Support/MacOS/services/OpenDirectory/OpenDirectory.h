/* What the library uses of Open Directory's C interface, declared from its public reference. */

#ifndef OPTRELLA_STANDIN_OPENDIRECTORY_H
#define OPTRELLA_STANDIN_OPENDIRECTORY_H

#include <CoreFoundation/CoreFoundation.h>
#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct __ODSession* ODSessionRef;
typedef struct __ODNode* ODNodeRef;
typedef struct __ODRecord* ODRecordRef;
typedef CFStringRef ODRecordType;
typedef uint32_t ODNodeType;

enum { kODNodeTypeLocalNodes = 0x2200, kODNodeTypeAuthentication = 0x2201 };

extern const ODRecordType kODRecordTypeUsers;

ODSessionRef ODSessionCreate(CFAllocatorRef allocator, CFDictionaryRef options, CFErrorRef* error);
ODNodeRef ODNodeCreateWithNodeType(CFAllocatorRef allocator, ODSessionRef session, ODNodeType type,
                                   CFErrorRef* error);
ODRecordRef ODNodeCopyRecord(ODNodeRef node, ODRecordType type, CFStringRef name,
                             CFTypeRef attributes, CFErrorRef* error);
bool ODRecordVerifyPassword(ODRecordRef record, CFStringRef password, CFErrorRef* error);

#ifdef __cplusplus
}
#endif

#endif
