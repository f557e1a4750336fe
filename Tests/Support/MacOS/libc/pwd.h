#ifndef OPTRELLA_STANDIN_PWD_H
#define OPTRELLA_STANDIN_PWD_H

#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

struct passwd {
    char* pw_name;
    char* pw_passwd;
    uid_t pw_uid;
    gid_t pw_gid;
    time_t pw_change;
    char* pw_class;
    char* pw_gecos;
    char* pw_dir;
    char* pw_shell;
    time_t pw_expire;
};
int getpwuid_r(uid_t, struct passwd*, char*, size_t, struct passwd**);

#ifdef __cplusplus
}
#endif

#endif
