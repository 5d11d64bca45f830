// The loopback transport: a reference per client lookup that hands transactions to the service's
// generated stub, the host service manager, and the report thread.
#include <android/hidl/manager/1.0/IServiceManager.h>
#include <android/log.h>
#include <hidl/HidlBinderSupport.h>
#include <hidl/HidlTransportSupport.h>
#include <hidl/HostTransport.h>
#include <hidl/ServiceManagement.h>
#include <hidl/Static.h>
#include <hwbinder/ProcessState.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace android {
namespace hardware {

using ::android::hidl::base::V1_0::IBase;
using ::android::hidl::manager::V1_0::IServiceManager;
using ::android::hidl::manager::V1_0::IServiceNotification;

sp<ProcessState> ProcessState::self() {
    static sp<ProcessState>* state = new sp<ProcessState>(new ProcessState());
    return *state;
}

void hidl_binder_death_recipient::binderDied(const wp<IBinder>& /*who*/) {
    sp<hidl_death_recipient> recipient = mRecipient.promote();
    if (recipient != nullptr) recipient->serviceDied(mCookie, mBase);
}

namespace details {

BnConstructorMap& getBnConstructorMap() {
    static BnConstructorMap* map = new BnConstructorMap();  // used by static constructors
    return *map;
}

BsConstructorMap& getBsConstructorMap() {
    static BsConstructorMap* map = new BsConstructorMap();
    return *map;
}

ConcurrentMap<ServiceKey, wp<BHwBinder>>* const gBnMap =
    new ConcurrentMap<ServiceKey, wp<BHwBinder>>();
ConcurrentMap<ServiceKey, SchedPrio>* const gServicePrioMap =
    new ConcurrentMap<ServiceKey, SchedPrio>();
ConcurrentMap<ServiceKey, bool>* const gServiceSidMap = new ConcurrentMap<ServiceKey, bool>();

namespace {

void endLookupWaits();

// A single thread delivers every death and registration report, in the order they were posted.
class TransportThread {
  public:
    ~TransportThread() {
        endLookupWaits();  // a report waiting for a service that never comes must not stall exit
        {
            std::lock_guard<std::mutex> lock(mLock);
            mStop = true;
        }
        mWake.notify_all();
        if (mThread.joinable()) mThread.join();
    }

    void post(std::function<void()> fn) {
        std::lock_guard<std::mutex> lock(mLock);
        if (!mThread.joinable()) mThread = std::thread([this] { run(); });
        mQueue.push_back(std::move(fn));
        mWake.notify_all();
    }

    void waitIdle() {
        std::unique_lock<std::mutex> lock(mLock);
        if (mThread.joinable() && mThread.get_id() == std::this_thread::get_id()) return;
        mIdle.wait(lock, [this] { return mQueue.empty() && !mBusy; });
    }

  private:
    void run() {
        std::unique_lock<std::mutex> lock(mLock);
        for (;;) {
            mWake.wait(lock, [this] { return mStop || !mQueue.empty(); });
            if (mQueue.empty()) return;
            std::function<void()> fn = std::move(mQueue.front());
            mQueue.pop_front();
            mBusy = true;
            lock.unlock();
            fn();
            fn = nullptr;  // drop what the report held before the next one runs
            lock.lock();
            mBusy = false;
            if (mQueue.empty()) mIdle.notify_all();
        }
    }

    std::mutex mLock;
    std::condition_variable mWake;
    std::condition_variable mIdle;
    std::deque<std::function<void()>> mQueue;
    bool mBusy = false;
    bool mStop = false;
    std::thread mThread;
};

TransportThread& transport() {
    static TransportThread t;
    return t;
}

// One registered service object as the transport sees it: the object, the stub that serves it
// and the death links of every reference to it. Stays dead once its service died; a service that
// comes back registers a new node.
class ServiceNode : public virtual RefBase {
  public:
    ServiceNode(const sp<IBase>& service, sp<BHwBinder> stub, std::vector<std::string> chain)
        : mService(service), mStub(std::move(stub)), mChain(std::move(chain)) {}

    sp<IBase> service() const {
        std::lock_guard<std::mutex> lock(mLock);
        return mService;
    }
    sp<BHwBinder> stub() const {
        std::lock_guard<std::mutex> lock(mLock);
        return mStub;
    }
    const std::vector<std::string>& chain() const { return mChain; }
    const char* descriptor() const { return mChain.front().c_str(); }

    bool link(const IBinder* binder, const wp<IBinder>& who,
              const sp<IBinder::DeathRecipient>& recipient) {
        std::lock_guard<std::mutex> lock(mLock);
        if (mService == nullptr) return false;
        mLinks.push_back(Link{binder, who, recipient});
        return true;
    }
    bool unlink(const IBinder* binder, const wp<IBinder::DeathRecipient>& recipient) {
        std::lock_guard<std::mutex> lock(mLock);
        auto it = std::find_if(mLinks.begin(), mLinks.end(), [&](const Link& l) {
            return l.binder == binder && l.recipient == recipient;
        });
        if (it == mLinks.end()) return false;
        mLinks.erase(it);
        return true;
    }
    void unlinkAll(const IBinder* binder) {
        std::lock_guard<std::mutex> lock(mLock);
        mLinks.erase(std::remove_if(mLinks.begin(), mLinks.end(),
                                    [&](const Link& l) { return l.binder == binder; }),
                     mLinks.end());
    }
    size_t linkCount() const {
        std::lock_guard<std::mutex> lock(mLock);
        return mLinks.size();
    }
    // Posts binderDied to every linked recipient that still exists when the report runs.
    void die() {
        std::vector<Link> links;
        sp<IBase> service;
        sp<BHwBinder> stub;
        {
            std::lock_guard<std::mutex> lock(mLock);
            service = std::move(mService);
            stub = std::move(mStub);
            mService = nullptr;
            mStub = nullptr;
            links.swap(mLinks);
        }
        for (const Link& l : links) {
            postToTransport([l] {
                sp<IBinder::DeathRecipient> recipient = l.recipient.promote();
                if (recipient != nullptr) recipient->binderDied(l.who);
            });
        }
    }

  private:
    struct Link {
        const IBinder* binder;
        wp<IBinder> who;
        wp<IBinder::DeathRecipient> recipient;
    };
    mutable std::mutex mLock;
    sp<IBase> mService;
    sp<BHwBinder> mStub;
    const std::vector<std::string> mChain;
    std::vector<Link> mLinks;
};

// The client side of one lookup: what a generated proxy holds as its remote reference. Its death
// links go with it.
class LoopbackBinder : public IBinder {
  public:
    explicit LoopbackBinder(sp<ServiceNode> node) : mNode(std::move(node)) {}
    ~LoopbackBinder() override { mNode->unlinkAll(this); }

    status_t transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags,
                      TransactCallback callback) override {
        sp<BHwBinder> stub = mNode->stub();
        if (stub == nullptr) return DEAD_OBJECT;
        TransactionScope scope(mNode->descriptor(), code);
        status_t err = stub->transact(code, data, reply, flags, [](Parcel&) {});
        scope.runDeferred();
        // The reply of a failed call never reaches the client.
        if (scope.failed()) return DEAD_OBJECT;
        if (scope.withheld()) reply->withholdValues();
        if (callback) callback(*reply);
        return err;
    }
    status_t linkToDeath(const sp<DeathRecipient>& recipient, void*, uint32_t) override {
        if (recipient == nullptr) return BAD_VALUE;
        return mNode->link(this, wp<IBinder>(this), recipient) ? OK : DEAD_OBJECT;
    }
    status_t unlinkToDeath(const wp<DeathRecipient>& recipient, void*, uint32_t,
                           wp<DeathRecipient>*) override {
        return mNode->unlink(this, recipient) ? OK : NAME_NOT_FOUND;
    }

  private:
    const sp<ServiceNode> mNode;
};

struct Registration {
    std::string descriptor;
    std::string name;
    sp<ServiceNode> node;
};

struct Listener {
    std::string descriptor;
    std::string name;  // empty: every instance
    sp<IServiceNotification> listener;
};

struct Registry {
    std::mutex lock;
    std::vector<Registration> registrations;
    std::vector<Listener> listeners;
    // What the device's manifest declares, as descriptor and instance name: lookups of these wait
    // for a registration.
    std::set<std::pair<std::string, std::string>> declared;
    std::condition_variable changed;  // a registration, a declaration withdrawn, or exit
    bool exiting = false;
    std::function<void(const std::string&, const std::string&)> lookupHook;
};

Registry& registry() {
    static Registry* r = new Registry();  // outlives every static that reports to it
    return *r;
}

void notify(const sp<IServiceNotification>& listener, const std::string& descriptor,
            const std::string& name, bool preexisting) {
    postToTransport([listener, descriptor, name, preexisting] {
        listener->onRegistration(descriptor, name, preexisting).isOk();
    });
}

sp<ServiceNode> findNodeLocked(const Registry& r, const std::string& descriptor,
                               const std::string& name) {
    for (const Registration& reg : r.registrations) {
        if (reg.descriptor == descriptor && reg.name == name && reg.node->service() != nullptr) {
            return reg.node;
        }
    }
    return nullptr;
}

sp<ServiceNode> findNode(const std::string& descriptor, const std::string& name) {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.lock);
    return findNodeLocked(r, descriptor, name);
}

void endLookupWaits() {
    Registry& r = registry();
    {
        std::lock_guard<std::mutex> lock(r.lock);
        r.exiting = true;
    }
    r.changed.notify_all();
}

// The lookup as the device's runtime makes it: a registered service at once; a declared one that
// is not registered yet after waiting for its registration, in rounds of one second with the
// runtime's warning after each; an undeclared one never.
sp<ServiceNode> waitForNode(const std::string& descriptor, const std::string& name) {
    Registry& r = registry();
    std::function<void(const std::string&, const std::string&)> hook;
    {
        std::lock_guard<std::mutex> lock(r.lock);
        hook = r.lookupHook;
    }
    if (hook) hook(descriptor, name);
    const std::pair<std::string, std::string> key(descriptor, name);
    for (;;) {
        {
            std::unique_lock<std::mutex> lock(r.lock);
            sp<ServiceNode> node;
            auto settled = [&] {
                node = findNodeLocked(r, descriptor, name);
                return node != nullptr || r.exiting || r.declared.count(key) == 0;
            };
            if (r.changed.wait_for(lock, std::chrono::seconds(1), settled)) return node;
        }
        // Logged outside the lock: a log reader may register services.
        __android_log_print(ANDROID_LOG_WARN, "HidlServiceManagement",
                            "Waited one second for %s/%s", descriptor.c_str(), name.c_str());
    }
}

bool addListener(const std::string& descriptor, const std::string& name,
                 const sp<IServiceNotification>& listener) {
    if (listener == nullptr) return false;
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.lock);
    r.listeners.push_back(Listener{descriptor, name, listener});
    for (const Registration& reg : r.registrations) {
        if (reg.descriptor == descriptor && (name.empty() || reg.name == name) &&
            reg.node->service() != nullptr) {
            notify(listener, reg.descriptor, reg.name, true);
        }
    }
    return true;
}

// The service manager, as the generated registerForNotifications reaches it.
class HostServiceManager : public IServiceManager {
  public:
    Return<sp<IBase>> get(const hidl_string& fqName, const hidl_string& name) override {
        sp<ServiceNode> node = findNode(fqName, name);
        return node == nullptr ? nullptr : node->service();
    }
    Return<bool> add(const hidl_string& name, const sp<IBase>& service) override {
        return registerAsServiceInternal(service, name) == OK;
    }
    Return<bool> registerForNotifications(const hidl_string& fqName, const hidl_string& name,
                                          const sp<IServiceNotification>& callback) override {
        return addListener(fqName, name, callback);
    }
};

constexpr int kServing = 0;
constexpr int kFailed = 1;
constexpr int kWithheld = 2;
thread_local const Transaction* tCurrent = nullptr;
thread_local int tState = kServing;

}  // namespace

thread_local TransactionScope* tScope = nullptr;

TransactionScope::TransactionScope(const char* descriptor, uint32_t position)
    : mTransaction{descriptor, position},
      mOuter(tCurrent),
      mOuterState(tState),
      mOuterScope(tScope) {
    tCurrent = &mTransaction;
    tState = kServing;
    tScope = this;
}

TransactionScope::~TransactionScope() {
    tCurrent = mOuter;
    tState = mOuterState;
    tScope = mOuterScope;
}

void TransactionScope::runDeferred() {
    std::function<void()> fn = std::move(mDeferred);
    mDeferred = nullptr;
    if (fn) fn();
}

void afterCurrentTransaction(std::function<void()> fn) {
    if (tScope == nullptr) {
        fn();
        return;
    }
    std::function<void()> earlier = std::move(tScope->mDeferred);
    tScope->mDeferred = [earlier, fn] {
        if (earlier) earlier();
        fn();
    };
}

bool TransactionScope::failed() const { return tState == kFailed; }
bool TransactionScope::withheld() const { return tState == kWithheld; }

const Transaction* currentTransaction() { return tCurrent; }

void failCurrentTransaction() {
    if (tCurrent != nullptr) tState = kFailed;
}

void withholdCurrentCallback() {
    if (tCurrent != nullptr && tState == kServing) tState = kWithheld;
}

Return<bool> canCastInterface(IBase* interface, const char* castTo, bool emitError) {
    if (interface == nullptr) return false;
    if (castTo == nullptr || castTo[0] == '\0') return true;
    bool canCast = false;
    Return<void> ret = interface->interfaceChain([&](const hidl_vec<hidl_string>& chain) {
        for (const hidl_string& descriptor : chain) {
            if (descriptor == castTo) canCast = true;
        }
    });
    if (!ret.isOk()) {
        if (emitError) return Status::fromStatusT(DEAD_OBJECT);
        return false;
    }
    return canCast;
}

sp<IBinder> getServiceBinder(const std::string& descriptor, const std::string& name) {
    sp<ServiceNode> node = waitForNode(descriptor, name);
    if (node == nullptr) return nullptr;
    return new LoopbackBinder(node);
}

status_t registerAsServiceInternal(const sp<IBase>& service, const std::string& name) {
    if (service == nullptr) return BAD_VALUE;
    std::vector<std::string> chain;
    service
        ->interfaceChain([&](const hidl_vec<hidl_string>& c) { chain.assign(c.begin(), c.end()); })
        .isOk();
    if (chain.empty()) return BAD_VALUE;
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.lock);
    sp<ServiceNode> node;
    for (const Registration& reg : r.registrations) {
        if (reg.node->service() == service && reg.node->chain() == chain) node = reg.node;
    }
    if (node == nullptr) {
        auto make = getBnConstructorMap().get(chain.front(), nullptr);
        if (!make) return UNKNOWN_ERROR;
        // Generated constructors take the object as the interface they serve; every interface
        // starts at the same address as its root.
        sp<IBinder> stub = make(static_cast<void*>(service.get()));
        node = new ServiceNode(service, static_cast<BHwBinder*>(stub.get()), chain);
    }
    for (const std::string& descriptor : chain) {
        if (descriptor == IBase::descriptor) continue;
        auto it = std::find_if(r.registrations.begin(), r.registrations.end(),
                               [&](const Registration& reg) {
                                   return reg.descriptor == descriptor && reg.name == name;
                               });
        if (it != r.registrations.end()) {
            it->node = node;
        } else {
            r.registrations.push_back(Registration{descriptor, name, node});
        }
        for (const Listener& l : r.listeners) {
            if (l.descriptor == descriptor && (l.name.empty() || l.name == name)) {
                notify(l.listener, descriptor, name, false);
            }
        }
    }
    r.changed.notify_all();
    return OK;
}

void killService(const sp<IBase>& service) {
    std::vector<sp<ServiceNode>> dying;
    {
        Registry& r = registry();
        std::lock_guard<std::mutex> lock(r.lock);
        for (auto it = r.registrations.begin(); it != r.registrations.end();) {
            if (it->node->service() == service) {
                if (std::find(dying.begin(), dying.end(), it->node) == dying.end()) {
                    dying.push_back(it->node);
                }
                it = r.registrations.erase(it);
            } else {
                ++it;
            }
        }
    }
    for (const sp<ServiceNode>& node : dying) node->die();
}

void resetServiceManager() {
    std::vector<sp<ServiceNode>> nodes;
    std::vector<Listener> listeners;
    Registry& r = registry();
    {
        std::lock_guard<std::mutex> lock(r.lock);
        for (const Registration& reg : r.registrations) nodes.push_back(reg.node);
        r.registrations.clear();
        r.declared.clear();
        listeners.swap(r.listeners);
    }
    r.changed.notify_all();
    for (const sp<ServiceNode>& node : nodes) node->die();
    waitForTransportIdle();
}

void declareService(const std::string& descriptor, const std::string& name, bool declared) {
    Registry& r = registry();
    {
        std::lock_guard<std::mutex> lock(r.lock);
        if (declared) {
            r.declared.emplace(descriptor, name);
        } else {
            r.declared.erase({descriptor, name});
        }
    }
    r.changed.notify_all();
}

void setLookupHook(std::function<void(const std::string&, const std::string&)> hook) {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.lock);
    r.lookupHook = std::move(hook);
}

size_t deathLinkCount(const std::string& descriptor, const std::string& name) {
    sp<ServiceNode> node = findNode(descriptor, name);
    return node == nullptr ? 0 : node->linkCount();
}

void postToTransport(std::function<void()> fn) { transport().post(std::move(fn)); }

void waitForTransportIdle() { transport().waitIdle(); }

}  // namespace details

sp<IBinder> getOrCreateCachedBinder(IBase* ifacePtr) {
    if (ifacePtr == nullptr) return nullptr;
    if (ifacePtr->isRemote()) return IInterface::asBinder(dynamic_cast<IInterface*>(ifacePtr));
    sp<BHwBinder> cached = details::gBnMap->get(ifacePtr, wp<BHwBinder>()).promote();
    if (cached != nullptr) return cached;
    std::string descriptor;
    ifacePtr->interfaceDescriptor([&](const hidl_string& d) { descriptor = d; }).isOk();
    auto make = details::getBnConstructorMap().get(descriptor, nullptr);
    if (!make) return nullptr;
    sp<IBinder> stub = make(static_cast<void*>(ifacePtr));
    details::gBnMap->set(ifacePtr, wp<BHwBinder>(static_cast<BHwBinder*>(stub.get())));
    return stub;
}

sp<IServiceManager> defaultServiceManager() {
    static sp<IServiceManager>* manager =
        new sp<IServiceManager>(new details::HostServiceManager());
    return *manager;
}

}  // namespace hardware
}  // namespace android
