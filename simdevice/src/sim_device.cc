// Lifecycle of the simulated services: configuration, registration, death and revival.
#include <hidl/HidlTransportSupport.h>
#include <hidl/HostTransport.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <thread>

#include "internal.h"

namespace simdevice {

namespace {

const std::vector<ServiceInfo>& Services() {
    // In the order of Service.
    static const std::vector<ServiceInfo> kServices = {
        {Service::kFactory,
         "factory",
         "vendor.tavrin.hardware.kxfactoryinterface",
         "IKxFactoryInterface",
         {"1.0", "1.1"},
         "kxfactoryinterface_hal"},
        {Service::kDisplay,
         "display",
         "vendor.tavrin.hardware.kxdisplay",
         "IDisplay",
         {"1.0", "1.1"},
         "default"},
        {Service::kTouchscreen,
         "touchscreen",
         "vendor.tavrin.hardware.tp",
         "ITouchscreen",
         {"1.0"},
         "default"},
        {Service::kSensors,
         "sensors",
         "vendor.tavrin.hardware.sensors",
         "ISensors",
         {"1.0", "1.1"},
         "default"},
        {Service::kPower, "power", "vendor.tavrin.hardware.power", "IKXPower", {"1.0"}, "default"},
        {Service::kLight, "light", "vendor.tavrin.hardware.light", "ILight", {"2.0"}, "default"},
        {Service::kOtherdevices,
         "otherdevices",
         "vendor.tavrin.hardware.otherdevices",
         "IOtherdevices",
         {"1.0"},
         "default"},
    };
    return kServices;
}

}  // namespace

const ServiceInfo& Info(Service service) { return Services()[static_cast<size_t>(service)]; }

const char* ServiceName(Service service) { return Info(service).name; }

const char* InstanceName(Service service) { return Info(service).instance; }

std::optional<Service> ServiceFromName(std::string_view name) {
    for (const ServiceInfo& info : Services()) {
        if (name == info.name) return info.service;
    }
    return std::nullopt;
}

bool HasMinorUpdate(Service service) { return Info(service).versions.size() > 1; }

struct SimDevice::Slot {
    Service service;
    internal::ServiceObject object;
    bool absent = false;
    bool only_v10 = false;
    int64_t start_delay_ms = 0;
    bool declared = false;
    bool registered = false;
    bool registered_only_v10 = false;  // how the current registration was made
};

// Registrations still to come, made by one thread of the device's own when they are due.
struct SimDevice::Schedule {
    std::mutex lock;
    std::condition_variable changed;
    std::multimap<std::chrono::steady_clock::time_point, Service> due;
    int registering = 0;  // taken from due, not yet made
    bool stopping = false;
    int64_t restart_delay_ms = kDefaultRestartDelayMs;
    std::thread thread;
};

SimDevice::SimDevice() : core_(std::make_shared<internal::Core>()), schedule_(new Schedule()) {
    for (Service s : kAllServices) {
        auto slot = std::make_unique<Slot>();
        slot->service = s;
        slot->object = internal::CreateService(s, core_);
        slots_.push_back(std::move(slot));
    }
    core_->SetCrashHandler([this](Service s) { Crash(s); });
}

SimDevice::~SimDevice() {
    core_->SetCrashHandler(nullptr);
    {
        std::lock_guard<std::mutex> lock(schedule_->lock);
        schedule_->stopping = true;
    }
    schedule_->changed.notify_all();
    if (schedule_->thread.joinable()) schedule_->thread.join();
    std::lock_guard<std::mutex> lock(lifecycle_);
    for (auto& slot : slots_) {
        KillLocked(*slot);
        DeclareLocked(*slot, false);  // lookups waiting for this device's services give up
    }
}

void SimDevice::DeclareLocked(Slot& slot, bool declared) {
    if (slot.declared == declared) return;
    slot.declared = declared;
    // The manifest names the service's newest version; lookups of every version it extends wait.
    std::vector<std::string> chain;
    slot.object.object
        ->interfaceChain(
            [&](const ::android::hardware::hidl_vec<::android::hardware::hidl_string>& c) {
                chain.assign(c.begin(), c.end());
            })
        .isOk();
    for (const std::string& descriptor : chain) {
        ::android::hardware::details::declareService(descriptor, InstanceName(slot.service),
                                                     declared);
    }
}

void SimDevice::RegisterLater(Service service, int64_t ms) {
    Schedule& s = *schedule_;
    {
        std::lock_guard<std::mutex> lock(s.lock);
        if (s.stopping) return;
        s.due.emplace(std::chrono::steady_clock::now() + std::chrono::milliseconds(ms), service);
        if (!s.thread.joinable()) {
            s.thread = std::thread([this, &s] {
                std::unique_lock<std::mutex> lock(s.lock);
                while (!s.stopping) {
                    if (s.due.empty()) {
                        s.changed.wait(lock);
                        continue;
                    }
                    auto next = s.due.begin();
                    if (next->first > std::chrono::steady_clock::now()) {
                        s.changed.wait_until(lock, next->first);
                        continue;  // due now, or the schedule changed: look again
                    }
                    Service due = next->second;
                    s.due.erase(next);
                    ++s.registering;
                    lock.unlock();
                    Revive(due);
                    lock.lock();
                    --s.registering;
                    s.changed.notify_all();
                }
            });
        }
    }
    s.changed.notify_all();
}

void SimDevice::Crash(Service service) {
    // The service goes down once its failed call has left it, as a process that aborts after the
    // call.
    ::android::hardware::details::afterCurrentTransaction([this, service] { CrashNow(service); });
}

void SimDevice::CrashNow(Service service) {
    Kill(service);
    int64_t delay;
    {
        std::lock_guard<std::mutex> lock(schedule_->lock);
        delay = schedule_->restart_delay_ms;
    }
    if (delay >= 0) RegisterLater(service, delay);
}

bool SimDevice::RegisterLocked(Slot& slot) {
    if (slot.registered) return false;
    if (slot.object.only_v10 != nullptr) slot.object.only_v10->store(slot.only_v10);
    // Every interface's registerAsService comes down to this; the object's interfaceChain decides
    // which descriptors it is found under.
    ::android::status_t status = ::android::hardware::details::registerAsServiceInternal(
        slot.object.object, InstanceName(slot.service));
    if (status != ::android::OK) return false;
    slot.registered = true;
    slot.registered_only_v10 = slot.only_v10;
    return true;
}

void SimDevice::KillLocked(Slot& slot) {
    if (!slot.registered) return;
    ::android::hardware::details::killService(slot.object.object);
    slot.registered = false;
}

bool SimDevice::SetAbsent(Service service, bool absent) {
    std::lock_guard<std::mutex> lock(lifecycle_);
    if (started_) return false;
    slots_[static_cast<size_t>(service)]->absent = absent;
    return true;
}

bool SimDevice::SetStartDelay(Service service, int64_t ms) {
    std::lock_guard<std::mutex> lock(lifecycle_);
    if (started_) return false;
    slots_[static_cast<size_t>(service)]->start_delay_ms = ms;
    return true;
}

void SimDevice::SetRestartDelay(int64_t ms) {
    std::lock_guard<std::mutex> lock(schedule_->lock);
    schedule_->restart_delay_ms = ms;
}

bool SimDevice::WaitRestarts(std::chrono::milliseconds timeout) {
    auto deadline = std::chrono::steady_clock::now() + timeout;
    {
        Schedule& s = *schedule_;
        std::unique_lock<std::mutex> lock(s.lock);
        if (!s.changed.wait_until(lock, deadline, [&] {
                return s.stopping || (s.due.empty() && s.registering == 0);
            })) {
            return false;
        }
    }
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    return WaitIdle(std::max(left, std::chrono::milliseconds(0)));
}

void SimDevice::WaitRestarts() {
    if (WaitRestarts(kWaitBound)) return;
    std::fprintf(stderr, "simdevice: registrations still to come after %lld s: %s\n",
                 static_cast<long long>(kWaitBound.count()), WaitingFor().c_str());
    std::abort();
}

std::vector<Service> SimDevice::PendingRegistrations() const {
    std::lock_guard<std::mutex> lock(schedule_->lock);
    std::vector<Service> pending;
    for (const auto& [when, service] : schedule_->due) pending.push_back(service);
    return pending;
}

std::string SimDevice::WaitingFor() const {
    std::string out;
    std::lock_guard<std::mutex> lifecycle(lifecycle_);
    {
        std::lock_guard<std::mutex> lock(schedule_->lock);
        auto now = std::chrono::steady_clock::now();
        for (const auto& [when, service] : schedule_->due) {
            auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(when - now).count();
            out += std::string(out.empty() ? "" : ", ") + ServiceName(service) + " to register" +
                   (ms > 0 ? " in " + std::to_string(ms) + " ms" : " now");
        }
        if (schedule_->registering > 0)
            out += std::string(out.empty() ? "" : ", ") + "a registration under way";
    }
    std::string down;
    for (const auto& slot : slots_) {
        if (slot->declared && !slot->registered) {
            down += std::string(down.empty() ? "" : ", ") + ServiceName(slot->service);
        }
    }
    if (!down.empty()) {
        out += std::string(out.empty() ? "" : "; ") +
               "declared but not registered, so lookups of " + "them wait: " + down;
    }
    return out.empty() ? "the transport's reports, every service being registered" : out;
}

bool SimDevice::SetOnlyV10(Service service, bool only) {
    if (!HasMinorUpdate(service)) return false;
    std::lock_guard<std::mutex> lock(lifecycle_);
    slots_[static_cast<size_t>(service)]->only_v10 = only;
    return true;
}

void SimDevice::Start() {
    std::lock_guard<std::mutex> lock(lifecycle_);
    if (started_) return;
    started_ = true;
    for (auto& slot : slots_) {
        if (slot->absent) continue;
        DeclareLocked(*slot, true);
        if (slot->start_delay_ms > 0) {
            RegisterLater(slot->service, slot->start_delay_ms);
        } else {
            RegisterLocked(*slot);
        }
    }
}

bool SimDevice::Kill(Service service) {
    std::lock_guard<std::mutex> lock(lifecycle_);
    Slot& slot = *slots_[static_cast<size_t>(service)];
    if (!slot.registered) return false;
    KillLocked(slot);
    return true;
}

bool SimDevice::Revive(Service service) {
    std::lock_guard<std::mutex> lock(lifecycle_);
    return RegisterLocked(*slots_[static_cast<size_t>(service)]);
}

bool SimDevice::ReviveAfter(Service service, int64_t ms) {
    std::lock_guard<std::mutex> lock(lifecycle_);
    if (slots_[static_cast<size_t>(service)]->registered) return false;
    RegisterLater(service, ms);
    return true;
}

void SimDevice::Withdraw(Service service) {
    {
        // A crashed service's restart must not bring it back.
        std::lock_guard<std::mutex> lock(schedule_->lock);
        for (auto it = schedule_->due.begin(); it != schedule_->due.end();) {
            it = it->second == service ? schedule_->due.erase(it) : std::next(it);
        }
    }
    schedule_->changed.notify_all();
    std::lock_guard<std::mutex> lock(lifecycle_);
    Slot& slot = *slots_[static_cast<size_t>(service)];
    slot.absent = true;
    KillLocked(slot);
    DeclareLocked(slot, false);
}

bool SimDevice::IsRegistered(Service service) const {
    std::lock_guard<std::mutex> lock(lifecycle_);
    return slots_[static_cast<size_t>(service)]->registered;
}

bool SimDevice::Linked(Service service) const {
    // Every descriptor of the chain names the same registration; the first version's is in all.
    const ServiceInfo& info = Info(service);
    std::string descriptor =
        std::string(info.package) + "@" + info.versions.front() + "::" + info.interface;
    return ::android::hardware::details::deathLinkCount(descriptor, info.instance) > 0;
}

bool SimDevice::Program(Service service, std::string_view operation, std::string_view answer,
                        std::string* error) {
    return Program(service, operation, std::vector<std::string>{std::string(answer)}, error);
}

bool SimDevice::Program(Service service, std::string_view operation, const Answer& answer,
                        std::string* error) {
    return core_->Program(service, operation, {answer}, error);
}

bool SimDevice::Program(Service service, std::string_view operation,
                        const std::vector<std::string>& answers, std::string* error) {
    std::vector<Answer> parsed;
    for (size_t i = 0; i < answers.size(); ++i) {
        std::optional<Answer> answer = Answer::Parse(answers[i], error);
        if (!answer) {
            if (error != nullptr && answers.size() > 1) {
                *error = "answer " + std::to_string(i + 1) + " of " +
                         std::to_string(answers.size()) + ": " + *error;
            }
            return false;
        }
        parsed.push_back(std::move(*answer));
    }
    if (core_->Program(service, operation, parsed, error)) return true;
    if (error != nullptr && answers.size() == 1 && FindOperation(service, operation) != nullptr) {
        *error = internal::ExplainRefusal(answers[0], *error);
    }
    return false;
}

bool SimDevice::SetDelay(Service service, std::string_view operation, int64_t ms,
                         std::string* error) {
    return core_->SetDelay(service, operation, ms, error);
}

std::optional<Answer> SimDevice::CurrentAnswer(Service service, std::string_view operation) const {
    return core_->CurrentAnswer(service, operation);
}

void SimDevice::ResetAnswers() { core_->ResetAnswers(); }

std::vector<Call> SimDevice::TakeCalls() { return core_->TakeCalls(); }

std::optional<std::vector<int32_t>> SimDevice::LastVector(Service service,
                                                          std::string_view operation) const {
    return core_->LastVector(service, operation);
}

std::optional<::vendor::tavrin::hardware::kxfactoryinterface::V1_0::FmdMsg> SimDevice::LastFmdMsg()
    const {
    return core_->LastFmdMsg();
}

std::optional<::vendor::tavrin::hardware::kxfactoryinterface::V1_0::FmdOperation>
SimDevice::LastFmdOperation() const {
    return core_->LastFmdOperation();
}

void SimDevice::Reset() {
    {
        std::lock_guard<std::mutex> lock(schedule_->lock);
        schedule_->due.clear();
        schedule_->restart_delay_ms = kDefaultRestartDelayMs;
    }
    schedule_->changed.notify_all();
    std::lock_guard<std::mutex> lock(lifecycle_);
    started_ = true;
    for (auto& slot : slots_) {
        slot->absent = false;
        slot->only_v10 = false;
        slot->start_delay_ms = 0;
        DeclareLocked(*slot, true);
        if (slot->registered && slot->registered_only_v10) KillLocked(*slot);
        RegisterLocked(*slot);
    }
    core_->ResetAnswers();
    core_->ClearRecords();
}

bool SimDevice::WaitIdle(std::chrono::milliseconds timeout) {
    // A marker behind every report posted so far; the transport runs them in order.
    struct Marker {
        std::mutex lock;
        std::condition_variable reached;
        bool done = false;
    };
    auto marker = std::make_shared<Marker>();
    ::android::hardware::details::postToTransport([marker] {
        std::lock_guard<std::mutex> lock(marker->lock);
        marker->done = true;
        marker->reached.notify_all();
    });
    std::unique_lock<std::mutex> lock(marker->lock);
    return marker->reached.wait_for(lock, timeout, [&] { return marker->done; });
}

void SimDevice::WaitIdle() {
    if (WaitIdle(kWaitBound)) return;
    std::fprintf(stderr, "simdevice: the transport's reports still undelivered after %lld s\n",
                 static_cast<long long>(kWaitBound.count()));
    std::abort();
}

}  // namespace simdevice
