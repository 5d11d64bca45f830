// Every line of the library goes to the platform log with a null tag; formats start with "%s: "
// and take the library's tag text as their first argument.
#ifndef KXMMI_HAL_MMI_LOG_H
#define KXMMI_HAL_MMI_LOG_H

#include <android/log.h>

#define KX_LOG_TAG "KxMMITest_jni"

#define KXLOG(prio, fmt, ...) __android_log_print(prio, nullptr, fmt, KX_LOG_TAG, ##__VA_ARGS__)
#define KXLOGD(fmt, ...) KXLOG(ANDROID_LOG_DEBUG, fmt, ##__VA_ARGS__)
#define KXLOGI(fmt, ...) KXLOG(ANDROID_LOG_INFO, fmt, ##__VA_ARGS__)
#define KXLOGW(fmt, ...) KXLOG(ANDROID_LOG_WARN, fmt, ##__VA_ARGS__)
#define KXLOGE(fmt, ...) KXLOG(ANDROID_LOG_ERROR, fmt, ##__VA_ARGS__)

#endif
