#include <hidl/HostTransport.h>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <thread>

namespace android {
namespace hidl {
namespace base {
namespace V1_0 {

const char* IBase::descriptor = "android.hidl.base@1.0::IBase";

::android::hardware::Return<void> IBase::interfaceChain(interfaceChain_cb _hidl_cb) {
    _hidl_cb({::android::hardware::hidl_string(descriptor)});
    return ::android::hardware::Void();
}

::android::hardware::Return<bool> IBase::linkToDeath(
    const ::android::sp<::android::hardware::hidl_death_recipient>&, uint64_t) {
    return false;
}

::android::hardware::Return<bool> IBase::unlinkToDeath(
    const ::android::sp<::android::hardware::hidl_death_recipient>&) {
    return false;
}

::android::hardware::Return<::android::sp<IBase>> IBase::castFrom(
    const ::android::sp<IBase>& parent, bool) {
    return parent;
}

}  // namespace V1_0
}  // namespace base
namespace manager {
namespace V1_0 {
const char* IServiceNotification::descriptor = "android.hidl.manager@1.0::IServiceNotification";
}  // namespace V1_0
}  // namespace manager
}  // namespace hidl

namespace hardware {
namespace details {

namespace {

// A single thread delivers every death and registration report, in the order they were posted.
class TransportThread {
  public:
    ~TransportThread() {
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

struct ServiceManager {
    std::mutex lock;
    std::vector<Registration> registrations;
    std::vector<Listener> listeners;
};

ServiceManager& manager() {
    static ServiceManager* m = new ServiceManager();  // outlives every static that reports to it
    return *m;
}

TransportThread& transport() {
    static TransportThread t;
    return t;
}

void notify(const sp<IServiceNotification>& listener, const std::string& descriptor,
            const std::string& name, bool preexisting) {
    postToTransport([listener, descriptor, name, preexisting] {
        listener->onRegistration(descriptor, name, preexisting).isOk();
    });
}

thread_local const Transaction* tCurrent = nullptr;
thread_local bool tFailed = false;

}  // namespace

ServiceNode::ServiceNode(const sp<IBase>& service, std::vector<std::string> chain)
    : mService(service), mChain(std::move(chain)) {}

sp<IBase> ServiceNode::service() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mService;
}

bool ServiceNode::isAlive() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mService != nullptr;
}

bool ServiceNode::implements(const char* descriptor) const {
    return std::find(mChain.begin(), mChain.end(), descriptor) != mChain.end();
}

bool ServiceNode::link(const void* proxy, const wp<IBase>& who,
                       const sp<hidl_death_recipient>& recipient, uint64_t cookie) {
    if (recipient == nullptr) return false;
    std::lock_guard<std::mutex> lock(mLock);
    if (mService == nullptr) return false;
    mLinks.push_back(Link{proxy, who, recipient, cookie});
    return true;
}

bool ServiceNode::unlink(const void* proxy, const sp<hidl_death_recipient>& recipient) {
    std::lock_guard<std::mutex> lock(mLock);
    auto it = std::find_if(mLinks.begin(), mLinks.end(), [&](const Link& l) {
        return l.proxy == proxy && l.recipient == recipient;
    });
    if (it == mLinks.end()) return false;
    mLinks.erase(it);
    return true;
}

void ServiceNode::unlinkAll(const void* proxy) {
    std::lock_guard<std::mutex> lock(mLock);
    mLinks.erase(std::remove_if(mLinks.begin(), mLinks.end(),
                                [&](const Link& l) { return l.proxy == proxy; }),
                 mLinks.end());
}

void ServiceNode::die() {
    std::vector<Link> links;
    sp<IBase> service;
    {
        std::lock_guard<std::mutex> lock(mLock);
        service = std::move(mService);
        mService = nullptr;
        links.swap(mLinks);
    }
    for (const Link& l : links) {
        postToTransport([l] {
            sp<hidl_death_recipient> recipient = l.recipient.promote();
            if (recipient != nullptr) recipient->serviceDied(l.cookie, l.who);
        });
    }
}

TransactionScope::TransactionScope(const char* descriptor, uint32_t position, const char* method)
    : mTransaction{descriptor, position, method}, mOuter(tCurrent), mOuterFailed(tFailed) {
    tCurrent = &mTransaction;
    tFailed = false;
}

TransactionScope::~TransactionScope() {
    tCurrent = mOuter;
    tFailed = mOuterFailed;
}

bool TransactionScope::failed() const { return tFailed; }

const Transaction* currentTransaction() { return tCurrent; }

void failCurrentTransaction() {
    if (tCurrent != nullptr) tFailed = true;
}

sp<ServiceNode> getServiceNode(const char* descriptor, const std::string& name) {
    ServiceManager& m = manager();
    std::lock_guard<std::mutex> lock(m.lock);
    for (const Registration& r : m.registrations) {
        if (r.descriptor == descriptor && r.name == name && r.node->isAlive()) return r.node;
    }
    return nullptr;
}

status_t registerAsServiceInternal(const sp<IBase>& service, const std::string& name) {
    if (service == nullptr) return BAD_VALUE;
    std::vector<std::string> chain;
    service
        ->interfaceChain([&](const hidl_vec<hidl_string>& c) { chain.assign(c.begin(), c.end()); })
        .isOk();
    ServiceManager& m = manager();
    std::lock_guard<std::mutex> lock(m.lock);
    sp<ServiceNode> node;
    for (const Registration& r : m.registrations) {
        if (r.node->service() == service) node = r.node;
    }
    if (node == nullptr) node = new ServiceNode(service, chain);
    for (const std::string& descriptor : chain) {
        if (descriptor == IBase::descriptor) continue;
        auto it = std::find_if(
            m.registrations.begin(), m.registrations.end(),
            [&](const Registration& r) { return r.descriptor == descriptor && r.name == name; });
        if (it != m.registrations.end()) {
            it->node = node;
        } else {
            m.registrations.push_back(Registration{descriptor, name, node});
        }
        for (const Listener& l : m.listeners) {
            if (l.descriptor == descriptor && (l.name.empty() || l.name == name)) {
                notify(l.listener, descriptor, name, false);
            }
        }
    }
    return OK;
}

bool registerForNotificationsInternal(const char* descriptor, const std::string& name,
                                      const sp<IServiceNotification>& listener) {
    if (listener == nullptr) return false;
    ServiceManager& m = manager();
    std::lock_guard<std::mutex> lock(m.lock);
    m.listeners.push_back(Listener{descriptor, name, listener});
    for (const Registration& r : m.registrations) {
        if (r.descriptor == descriptor && (name.empty() || r.name == name) && r.node->isAlive()) {
            notify(listener, r.descriptor, r.name, true);
        }
    }
    return true;
}

void killService(const sp<IBase>& service) {
    std::vector<sp<ServiceNode>> dying;
    {
        ServiceManager& m = manager();
        std::lock_guard<std::mutex> lock(m.lock);
        for (auto it = m.registrations.begin(); it != m.registrations.end();) {
            if (it->node->service() == service) {
                if (std::find(dying.begin(), dying.end(), it->node) == dying.end()) {
                    dying.push_back(it->node);
                }
                it = m.registrations.erase(it);
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
    {
        ServiceManager& m = manager();
        std::lock_guard<std::mutex> lock(m.lock);
        for (const Registration& r : m.registrations) nodes.push_back(r.node);
        m.registrations.clear();
        listeners.swap(m.listeners);
    }
    for (const sp<ServiceNode>& node : nodes) node->die();
    waitForTransportIdle();
}

void postToTransport(std::function<void()> fn) { transport().post(std::move(fn)); }

void waitForTransportIdle() { transport().waitIdle(); }

}  // namespace details
}  // namespace hardware
}  // namespace android
