/* Quality-of-service classes: what the queue is asked for, and what a thread says of itself. */

#ifndef OPTRELLA_STANDIN_SYS_QOS_H
#define OPTRELLA_STANDIN_SYS_QOS_H

#ifdef __cplusplus
extern "C" {
#endif

typedef enum : unsigned {
    QOS_CLASS_USER_INTERACTIVE = 0x21,
    QOS_CLASS_USER_INITIATED = 0x19,
    QOS_CLASS_DEFAULT = 0x15,
    QOS_CLASS_UTILITY = 0x11,
    QOS_CLASS_BACKGROUND = 0x09,
    QOS_CLASS_UNSPECIFIED = 0x00
} qos_class_t;

qos_class_t qos_class_self(void);

#ifdef __cplusplus
}
#endif

#endif
