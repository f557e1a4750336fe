#ifndef OPTRELLA_STANDIN_LIBKERN_OSBYTEORDER_H
#define OPTRELLA_STANDIN_LIBKERN_OSBYTEORDER_H

enum { OSUnknownByteOrder, OSLittleEndian, OSBigEndian };

static inline int OSHostByteOrder(void) { return OSLittleEndian; }

#define OSSwapInt16(value) __builtin_bswap16(value)
#define OSSwapBigToHostInt16(value) __builtin_bswap16(value)
#define OSSwapHostToBigInt16(value) __builtin_bswap16(value)
#define OSSwapLittleToHostInt16(value) (value)
#define OSSwapHostToLittleInt16(value) (value)
#define OSSwapInt32(value) __builtin_bswap32(value)
#define OSSwapBigToHostInt32(value) __builtin_bswap32(value)
#define OSSwapHostToBigInt32(value) __builtin_bswap32(value)
#define OSSwapLittleToHostInt32(value) (value)
#define OSSwapHostToLittleInt32(value) (value)
#define OSSwapInt64(value) __builtin_bswap64(value)
#define OSSwapBigToHostInt64(value) __builtin_bswap64(value)
#define OSSwapHostToBigInt64(value) __builtin_bswap64(value)
#define OSSwapLittleToHostInt64(value) (value)
#define OSSwapHostToLittleInt64(value) (value)

#endif
