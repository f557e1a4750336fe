// On Linux the queue gives its threads a nice value for each class.

#include <sys/qos.h>
#include <sys/resource.h>

extern "C" qos_class_t qos_class_self(void) {
    constexpr int ofTheBackground = 10;
    const bool isBackground = ::getpriority(PRIO_PROCESS, 0) == ofTheBackground;
    return isBackground ? QOS_CLASS_BACKGROUND : QOS_CLASS_DEFAULT;
}
