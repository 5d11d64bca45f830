#include "service_registry.h"

#include <mutex>

#include "mmi_log.h"

using ::android::sp;
using ::android::wp;
using ::android::hardware::hidl_string;
using ::android::hidl::base::V1_0::IBase;
using kxmmi::Service;
using kxmmi::ServiceInterface;

// Declared in teardown order reversed: the holder goes first, then the handles from the last row
// back, the empty text last.
static const std::string g_emptyTextValue;
static sp<kxmmi::IKxFactoryInterface> g_kxFactoryInterface;
static sp<kxmmi::IDisplay> g_kxDisplay;
static sp<kxmmi::ITouchscreen> g_kxTouchScreen;
static sp<kxmmi::ISensors> g_kxSensors;
static sp<kxmmi::IKXPower> g_kxPower;
static sp<kxmmi::ILight> g_kxLight;
static sp<kxmmi::IOtherdevices> g_kxOtherdevices;
sp<HidlUtil> g_hidlUtil;

namespace kxmmi {

std::atomic<uint8_t> g_tpPressureSupportCache{0};

namespace {

// Guards the seven handle variables: a copy or a store, nothing longer, happens under it.
std::mutex g_handleLock;
// Keeps a connect pass and a release pass (from load, unload and the event callbacks, which run
// on different threads) from interleaving row by row.
std::mutex g_passLock;

template <Service S>
sp<ServiceInterface<S>>& Slot();
template <>
sp<IKxFactoryInterface>& Slot<Service::Factory>() {
    return g_kxFactoryInterface;
}
template <>
sp<IDisplay>& Slot<Service::Display>() {
    return g_kxDisplay;
}
template <>
sp<ITouchscreen>& Slot<Service::TouchScreen>() {
    return g_kxTouchScreen;
}
template <>
sp<ISensors>& Slot<Service::Sensors>() {
    return g_kxSensors;
}
template <>
sp<IKXPower>& Slot<Service::Power>() {
    return g_kxPower;
}
template <>
sp<ILight>& Slot<Service::Light>() {
    return g_kxLight;
}
template <>
sp<IOtherdevices>& Slot<Service::OtherDevices>() {
    return g_kxOtherdevices;
}

// Looks the service up and stores it; returns the new handle (empty when not found).
template <Service S>
sp<ServiceInterface<S>> Connect(const char* instance) {
    sp<ServiceInterface<S>> service = ServiceInterface<S>::getService(instance, false);
    sp<ServiceInterface<S>> previous;
    {
        std::lock_guard<std::mutex> lock(g_handleLock);
        previous = Slot<S>();
        Slot<S>() = service;
    }
    return service;  // the previous proxy is released here, outside the lock
}

template <Service S>
void Link(const sp<ServiceInterface<S>>& service, uint64_t cookie) {
    sp<HidlUtil> holder = g_hidlUtil;
    service->linkToDeath(holder, cookie).isOk();  // a refused link is not a connect failure
}

template <Service S>
void Release() {
    sp<HidlUtil> holder = g_hidlUtil;
    UnlinkAndEmpty(Slot<S>(), g_handleLock, holder);
}

// Counts the starts and ends of connect and release passes (odd while one runs), so that a support
// query can tell whether its handle may have changed under it; written with the cache under lock.
uint32_t g_passEdges = 0;
std::mutex g_supportLock;

// Opens a pass: the cache forgets its answer, and no query begun before or during the pass can
// set it again.
void BeginPass() {
    std::lock_guard<std::mutex> lock(g_supportLock);
    ++g_passEdges;
    g_tpPressureSupportCache.store(0);
}

void EndPass() {
    std::lock_guard<std::mutex> lock(g_supportLock);
    ++g_passEdges;
}

}  // namespace

template <Service S>
sp<ServiceInterface<S>> Handle() {
    std::lock_guard<std::mutex> lock(g_handleLock);
    return Slot<S>();
}
template sp<IKxFactoryInterface> Handle<Service::Factory>();
template sp<IDisplay> Handle<Service::Display>();
template sp<ITouchscreen> Handle<Service::TouchScreen>();
template sp<ISensors> Handle<Service::Sensors>();
template sp<IKXPower> Handle<Service::Power>();
template sp<ILight> Handle<Service::Light>();
template sp<IOtherdevices> Handle<Service::OtherDevices>();

void WatchServices() {
    sp<HidlUtil> holder = g_hidlUtil;
    // An empty instance name asks for every instance; a refused registration is not a failure.
    IKxFactoryInterface::registerForNotifications("", holder);
    IDisplay::registerForNotifications("", holder);
    ITouchscreen::registerForNotifications("", holder);
    ISensors::registerForNotifications("", holder);
    IKXPower::registerForNotifications("", holder);
    ILight::registerForNotifications("", holder);
    IOtherdevices::registerForNotifications("", holder);
}

const std::string& EmptyText() { return g_emptyTextValue; }

uint32_t SupportQueryStart() {
    std::lock_guard<std::mutex> lock(g_supportLock);
    return g_passEdges;
}

void CacheTpPressureSupport(uint32_t queryStart) {
    std::lock_guard<std::mutex> lock(g_supportLock);
    if (g_passEdges == queryStart && queryStart % 2 == 0) g_tpPressureSupportCache.store(1);
}

}  // namespace kxmmi

void InitMmiNativeManager() {
    using namespace kxmmi;
    std::lock_guard<std::mutex> pass(g_passLock);
    KXLOGD("%s: InitMmiNativeManager");
    BeginPass();
    if (auto s = Connect<Service::Factory>("kxfactoryinterface_hal")) {
        KXLOGD("%s: g_kxFactoryInterface linkToDeath");
        Link<Service::Factory>(s, 1);
    }
    if (auto s = Connect<Service::Display>("default")) {
        KXLOGD("%s: g_kxDisplay linkToDeath");
        Link<Service::Display>(s, 2);
    }
    if (auto s = Connect<Service::TouchScreen>("default")) {
        KXLOGD("%s: g_kxTouchScreen linkToDeath");
        Link<Service::TouchScreen>(s, 3);
    }
    if (auto s = Connect<Service::Sensors>("default")) {
        KXLOGD("%s: g_kxSensors linkToDeath");
        Link<Service::Sensors>(s, 4);
    }
    if (auto s = Connect<Service::Power>("default")) {
        KXLOGD("%s: g_kxPower linkToDeath");
        Link<Service::Power>(s, 5);
    }
    if (auto s = Connect<Service::Light>("default")) {
        __android_log_print(ANDROID_LOG_DEBUG, nullptr, "g_kxLight linkToDeath");
        Link<Service::Light>(s, 6);
    }
    if (auto s = Connect<Service::OtherDevices>("default")) {
        KXLOGD("%s: g_kxOtherdevices linkToDeath");
        Link<Service::OtherDevices>(s, 7);
    }
    EndPass();
}

void ExitMmiNativeManager() {
    using namespace kxmmi;
    std::lock_guard<std::mutex> pass(g_passLock);
    KXLOGD("%s: ExitMmiNativeManager");
    BeginPass();
    Release<Service::Factory>();
    Release<Service::Display>();
    Release<Service::TouchScreen>();
    Release<Service::Sensors>();
    Release<Service::Power>();
    Release<Service::Light>();
    Release<Service::OtherDevices>();
    EndPass();
}

void ProcessServiceDied(uint64_t cookie, const wp<IBase>& /*who*/) {
    KXLOGW("%s: ProcessServiceDied, cookie is:%lu", static_cast<unsigned long>(cookie));
    ExitMmiNativeManager();
}

void ReinitHal(const hidl_string& fqName, const hidl_string& name, bool isPreexisting) {
    KXLOGW("%s: ReinitHal, fqName:%s, name:%s, isPreexisting:%d", fqName.c_str(), name.c_str(),
           isPreexisting ? 1 : 0);
    if (!isPreexisting) InitMmiNativeManager();
}
