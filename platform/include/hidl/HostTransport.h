// In-process transport for host builds. Services register with a process-wide service manager;
// clients get proxies that carry every call to the service object with the operation's position,
// fail with a transport error once the service has died, and deliver death and registration
// reports on a transport thread of their own, never on the caller's.
#ifndef HIDL_HOSTTRANSPORT_H
#define HIDL_HOSTTRANSPORT_H

#include <android/hidl/base/1.0/IBase.h>
#include <android/hidl/manager/1.0/IServiceNotification.h>
#include <hidl/HidlSupport.h>

#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace android {
namespace hardware {
namespace details {

using ::android::hidl::base::V1_0::IBase;
using ::android::hidl::manager::V1_0::IServiceNotification;

// One registered service object as the transport sees it. Stays dead once its service died; a
// service that comes back registers a new node.
class ServiceNode : public virtual RefBase {
  public:
    ServiceNode(const sp<IBase>& service, std::vector<std::string> chain);

    sp<IBase> service() const;  // empty once dead
    bool implements(const char* descriptor) const;
    const std::vector<std::string>& chain() const { return mChain; }
    bool isAlive() const;

    bool link(const void* proxy, const wp<IBase>& who, const sp<hidl_death_recipient>& recipient,
              uint64_t cookie);
    bool unlink(const void* proxy, const sp<hidl_death_recipient>& recipient);
    void unlinkAll(const void* proxy);
    void die();  // posts serviceDied to every linked recipient

  private:
    struct Link {
        const void* proxy;
        wp<IBase> who;
        wp<hidl_death_recipient> recipient;
        uint64_t cookie;
    };
    mutable std::mutex mLock;
    sp<IBase> mService;
    const std::vector<std::string> mChain;
    std::vector<Link> mLinks;
};

// The call being served on this thread, as the transport handed it to the service.
struct Transaction {
    const char* descriptor;  // interface that declares the operation
    uint32_t position;       // the operation's position in that interface, counted from 1
    const char* method;
};
const Transaction* currentTransaction();
// Lets a service end the call it is serving with a transport failure, as a death in the middle of
// the call would; its callback, if not yet invoked, never is.
void failCurrentTransaction();

class TransactionScope {
  public:
    TransactionScope(const char* descriptor, uint32_t position, const char* method);
    ~TransactionScope();
    bool failed() const;
    TransactionScope(const TransactionScope&) = delete;
    TransactionScope& operator=(const TransactionScope&) = delete;

  private:
    Transaction mTransaction;
    const Transaction* mOuter;
    bool mOuterFailed;
};

// Base of every client proxy: the node it reaches and its death links.
class HostProxyBase {
  public:
    explicit HostProxyBase(sp<ServiceNode> node) : mNode(std::move(node)) {}
    virtual ~HostProxyBase() { mNode->unlinkAll(this); }
    const sp<ServiceNode>& node() const { return mNode; }

    template <typename I, typename R, typename Fn>
    Return<R> transact(uint32_t position, const char* method, Fn&& fn) const {
        sp<IBase> service = mNode->service();
        if (service == nullptr) return Status::fromStatusT(DEAD_OBJECT);
        I* target = dynamic_cast<I*>(service.get());
        if (target == nullptr) return Status::fromStatusT(UNKNOWN_TRANSACTION);
        TransactionScope scope(I::descriptor, position, method);
        Return<R> ret = fn(*target);
        if (scope.failed()) {
            ret.isOk();
            return Status::fromStatusT(DEAD_OBJECT);
        }
        return ret;
    }

  private:
    sp<ServiceNode> mNode;
};

template <typename I>
class HostProxy : public I, public HostProxyBase {
  public:
    explicit HostProxy(sp<ServiceNode> node) : HostProxyBase(std::move(node)) {}
    bool isRemote() const override { return true; }
    Return<void> interfaceChain(typename I::interfaceChain_cb cb) override {
        std::vector<hidl_string> chain(node()->chain().begin(), node()->chain().end());
        cb(chain);
        return Void();
    }
    Return<bool> linkToDeath(const sp<hidl_death_recipient>& recipient, uint64_t cookie) override {
        return node()->link(this, wp<IBase>(static_cast<IBase*>(this)), recipient, cookie);
    }
    Return<bool> unlinkToDeath(const sp<hidl_death_recipient>& recipient) override {
        return node()->unlink(this, recipient);
    }
};

sp<ServiceNode> getServiceNode(const char* descriptor, const std::string& name);
status_t registerAsServiceInternal(const sp<IBase>& service, const std::string& name);
bool registerForNotificationsInternal(const char* descriptor, const std::string& name,
                                      const sp<IServiceNotification>& listener);

template <typename I, typename Proxy>
sp<I> getServiceInternal(const std::string& name) {
    sp<ServiceNode> node = getServiceNode(I::descriptor, name);
    if (node == nullptr) return nullptr;
    return new Proxy(node);
}

template <typename IChild, typename BpChild, typename IParent>
Return<sp<IChild>> castInterface(const sp<IParent>& parent, bool emitError) {
    if (parent == nullptr) return sp<IChild>(nullptr);
    if (auto* proxy = dynamic_cast<HostProxyBase*>(parent.get())) {
        const sp<ServiceNode>& node = proxy->node();
        if (!node->isAlive()) {
            if (emitError) return Status::fromStatusT(DEAD_OBJECT);
            return sp<IChild>(nullptr);
        }
        if (!node->implements(IChild::descriptor)) return sp<IChild>(nullptr);
        return sp<IChild>(new BpChild(node));
    }
    return sp<IChild>(dynamic_cast<IChild*>(parent.get()));
}

// Host controls for simulated services and tests.
// Kills every registration of the service object: calls through existing proxies fail with a
// transport error and linked recipients are told on the transport thread.
void killService(const sp<IBase>& service);
// Forgets every registration and listener (a fresh device).
void resetServiceManager();
// Runs fn on the transport thread, after every report posted before it.
void postToTransport(std::function<void()> fn);
// Returns once every report posted so far has been delivered.
void waitForTransportIdle();

}  // namespace details
}  // namespace hardware
}  // namespace android

#endif
