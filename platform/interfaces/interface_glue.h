// What every host interface version defines besides its proxy: its place in the service manager
// (lookup, registration, watch), its interface chain and its cast from the base version.
#ifndef KXMMI_PLATFORM_INTERFACES_INTERFACE_GLUE_H
#define KXMMI_PLATFORM_INTERFACES_INTERFACE_GLUE_H

#include <hidl/HostTransport.h>

#define HOST_INTERFACE_GLUE(Iface, Proxy, Base, ...)                                             \
    ::android::hardware::Return<void> Iface::interfaceChain(interfaceChain_cb _hidl_cb) {        \
        _hidl_cb({__VA_ARGS__, ::android::hidl::base::V1_0::IBase::descriptor});                  \
        return ::android::hardware::Void();                                                      \
    }                                                                                            \
    ::android::hardware::Return<::android::sp<Iface>> Iface::castFrom(                           \
        const ::android::sp<Base>& parent, bool emitError) {                                     \
        return ::android::hardware::details::castInterface<Iface, Proxy>(parent, emitError);     \
    }                                                                                            \
    ::android::sp<Iface> Iface::getService(const std::string& serviceName, bool /*getStub*/) {   \
        return ::android::hardware::details::getServiceInternal<Iface, Proxy>(serviceName);      \
    }                                                                                            \
    ::android::status_t Iface::registerAsService(const std::string& serviceName) {               \
        return ::android::hardware::details::registerAsServiceInternal(this, serviceName);       \
    }                                                                                            \
    bool Iface::registerForNotifications(                                                        \
        const std::string& serviceName,                                                          \
        const ::android::sp<::android::hidl::manager::V1_0::IServiceNotification>& listener) {  \
        return ::android::hardware::details::registerForNotificationsInternal(                   \
            descriptor, serviceName, listener);                                                  \
    }

#endif
