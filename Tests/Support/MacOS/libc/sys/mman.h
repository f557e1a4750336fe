#ifndef OPTRELLA_STANDIN_SYS_MMAN_H
#define OPTRELLA_STANDIN_SYS_MMAN_H

#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

#define PROT_READ 1
#define PROT_WRITE 2
#define MAP_PRIVATE 0x0002
#define MAP_ANON 0x1000
#define MAP_ANONYMOUS MAP_ANON
#define MAP_FAILED ((void*)-1)
void* mmap(void*, size_t, int, int, int, off_t);
int munmap(void*, size_t);
int mlock(const void*, size_t);

#ifdef __cplusplus
}
#endif

#endif
