// The seven process-wide service handles, the service-event holder, and the routines that
// connect, release and re-connect the handles. Native methods only read the handles, each through
// its own strong reference taken at the start of the call.
#ifndef KXMMI_HAL_SERVICE_REGISTRY_H
#define KXMMI_HAL_SERVICE_REGISTRY_H

#include <HidlUtil.h>
#include <android/hidl/base/1.0/IBase.h>
#include <hidl/HidlSupport.h>
#include <utils/StrongPointer.h>
#include <vendor/tavrin/hardware/kxdisplay/1.0/IDisplay.h>
#include <vendor/tavrin/hardware/kxfactoryinterface/1.0/IKxFactoryInterface.h>
#include <vendor/tavrin/hardware/light/2.0/ILight.h>
#include <vendor/tavrin/hardware/otherdevices/1.0/IOtherdevices.h>
#include <vendor/tavrin/hardware/power/1.0/IKXPower.h>
#include <vendor/tavrin/hardware/sensors/1.0/ISensors.h>
#include <vendor/tavrin/hardware/tp/1.0/ITouchscreen.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

// Connects all seven handles (also after any new service registration).
void InitMmiNativeManager();
// Releases all seven handles (also after any service death).
void ExitMmiNativeManager();
// Death callback of the service-event holder: any death releases every handle.
void ProcessServiceDied(uint64_t cookie,
                        const ::android::wp<::android::hidl::base::V1_0::IBase>& who);
// Registration callback of the service-event holder: a new registration re-connects every handle.
void ReinitHal(const ::android::hardware::hidl_string& fqName,
               const ::android::hardware::hidl_string& name, bool isPreexisting);

extern ::android::sp<HidlUtil> g_hidlUtil;

namespace kxmmi {

using IKxFactoryInterface =
    ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface;
using IDisplay = ::vendor::tavrin::hardware::kxdisplay::V1_0::IDisplay;
using ITouchscreen = ::vendor::tavrin::hardware::tp::V1_0::ITouchscreen;
using ISensors = ::vendor::tavrin::hardware::sensors::V1_0::ISensors;
using IKXPower = ::vendor::tavrin::hardware::power::V1_0::IKXPower;
using ILight = ::vendor::tavrin::hardware::light::V2_0::ILight;
using IOtherdevices = ::vendor::tavrin::hardware::otherdevices::V1_0::IOtherdevices;

enum class Service { Factory, Display, TouchScreen, Sensors, Power, Light, OtherDevices };

template <Service S>
struct ServiceTraits;
// Each service's interface and the handle name its empty-handle lines show.
#define KXMMI_SERVICE_TRAITS(S, I, name)                 \
    template <>                                          \
    struct ServiceTraits<Service::S> {                   \
        using Interface = I;                             \
        static constexpr const char* kHandleName = name; \
    };
KXMMI_SERVICE_TRAITS(Factory, IKxFactoryInterface, "g_kxFactoryInterface")
KXMMI_SERVICE_TRAITS(Display, IDisplay, "g_kxDisplay")
KXMMI_SERVICE_TRAITS(TouchScreen, ITouchscreen, "g_kxTouchScreen")
KXMMI_SERVICE_TRAITS(Sensors, ISensors, "g_kxSensors")
KXMMI_SERVICE_TRAITS(Power, IKXPower, "g_kxPower")
KXMMI_SERVICE_TRAITS(Light, ILight, "g_kxLight")
KXMMI_SERVICE_TRAITS(OtherDevices, IOtherdevices, "g_kxOtherdevices")
#undef KXMMI_SERVICE_TRAITS

template <Service S>
using ServiceInterface = typename ServiceTraits<S>::Interface;

// A strong reference to the service's current handle (empty when not connected), safe against a
// concurrent release or re-connect by the event callbacks.
template <Service S>
::android::sp<ServiceInterface<S>> Handle();

// One row of a release pass: unlinks the handle from the holder while the handle still holds the
// service, then empties it under lock. The unlink and the last reference to the proxy happen
// outside the lock, which guards only the handle variable.
template <typename I>
void UnlinkAndEmpty(::android::sp<I>& handle, std::mutex& lock,
                    const ::android::sp<HidlUtil>& holder) {
    ::android::sp<I> service;
    {
        std::lock_guard<std::mutex> guard(lock);
        service = handle;
    }
    if (service == nullptr) return;
    service->unlinkToDeath(holder).isOk();  // a dead service's unlink fails; nothing to undo
    std::lock_guard<std::mutex> guard(lock);
    handle = nullptr;
}

// Registers the holder for registration reports of each of the seven interfaces.
void WatchServices();

// The tp-pressure-support cache: 1 once the touchscreen said it supports pressure; cleared by
// every connect and release.
extern std::atomic<uint8_t> g_tpPressureSupportCache;
// A support query notes this before it takes its handle and hands it to CacheTpPressureSupport,
// which caches a true answer only if no connect or release pass was running then or has begun
// since: a query that raced with a pass must not leave a cached true behind it.
uint32_t SupportQueryStart();
void CacheTpPressureSupport(uint32_t queryStart);

// The process-wide empty text the record readers hand out on failure.
const std::string& EmptyText();

}  // namespace kxmmi

#endif
