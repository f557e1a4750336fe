/* What the library uses of Identity Services, declared from their public reference. */

#ifndef OPTRELLA_STANDIN_CORESERVICES_H
#define OPTRELLA_STANDIN_CORESERVICES_H

#include <CoreFoundation/CoreFoundation.h>
#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct __CSIdentity* CSIdentityRef;
typedef struct __CSIdentityAuthority* CSIdentityAuthorityRef;
typedef struct __CSIdentityQuery* CSIdentityQueryRef;

typedef CFIndex CSIdentityClass;
enum { kCSIdentityClassUser = 1, kCSIdentityClassGroup = 2 };

typedef CFIndex CSIdentityQueryStringComparisonMethod;
enum { kCSIdentityQueryStringEquals = 1, kCSIdentityQueryStringBeginsWith = 2 };

typedef CFOptionFlags CSIdentityQueryFlags;
enum { kCSIdentityQueryGenerateUpdateEvents = 1, kCSIdentityQueryIncludeHiddenIdentities = 2 };

CSIdentityAuthorityRef CSGetDefaultIdentityAuthority(void);
CSIdentityQueryRef CSIdentityQueryCreateForName(CFAllocatorRef allocator, CFStringRef name,
                                                CSIdentityQueryStringComparisonMethod method,
                                                CSIdentityClass kind,
                                                CSIdentityAuthorityRef authority);
CSIdentityQueryRef CSIdentityQueryCreateForPosixID(CFAllocatorRef allocator, id_t id,
                                                   CSIdentityClass kind,
                                                   CSIdentityAuthorityRef authority);
Boolean CSIdentityQueryExecute(CSIdentityQueryRef query, CSIdentityQueryFlags flags,
                               CFErrorRef* error);
CFArrayRef CSIdentityQueryCopyResults(CSIdentityQueryRef query);
void CSIdentityQueryStop(CSIdentityQueryRef query);
CFStringRef CSIdentityGetPosixName(CSIdentityRef identity);
Boolean CSIdentityIsMemberOfGroup(CSIdentityRef identity, CSIdentityRef group);

#ifdef __cplusplus
}
#endif

#endif
