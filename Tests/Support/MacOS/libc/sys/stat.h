#ifndef OPTRELLA_STANDIN_SYS_STAT_H
#define OPTRELLA_STANDIN_SYS_STAT_H

#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

struct stat {
    dev_t st_dev;
    mode_t st_mode;
    nlink_t st_nlink;
    ino_t st_ino;
    uid_t st_uid;
    gid_t st_gid;
    off_t st_size;
};
#define S_IFMT 0170000
#define S_IFDIR 0040000
#define S_ISDIR(mode) (((mode)&S_IFMT) == S_IFDIR)
int lstat(const char*, struct stat*);
int stat(const char*, struct stat*);

#ifdef __cplusplus
}
#endif

#endif
