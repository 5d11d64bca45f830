// In-process transport for host builds. Services register with a process-wide host service
// manager; clients get the generated proxies over a loopback reference that hands each
// transaction to the service's generated stub with the operation's position (its transaction
// code), fails with a transport error once the service has died, and delivers death and
// registration reports on a transport thread of its own, never on the caller's.
#ifndef HIDL_HOSTTRANSPORT_H
#define HIDL_HOSTTRANSPORT_H

#include <android/hidl/base/1.0/IBase.h>
#include <hidl/HidlSupport.h>

#include <cstdint>
#include <functional>
#include <string>

namespace android {
namespace hardware {
namespace details {

// The call being served on this thread, as the transport handed it to the service.
struct Transaction {
    const char* descriptor;  // the interface the service was registered with, most derived
    uint32_t position;       // the transaction code: the operation's position, counted from 1
};
const Transaction* currentTransaction();
// Lets a service end the call it is serving with a transport failure, as a death in the middle of
// the call would; the client's callback never runs.
void failCurrentTransaction();
// Lets a service end the call it is serving successfully but without the client's callback
// running, as a service that returns without calling back would in the same process.
void withholdCurrentCallback();

// Lets a service act once the call it is serving has ended (a crash that takes the service down
// after its failed call left it), on the same thread; outside a call, at once.
void afterCurrentTransaction(std::function<void()> fn);

class TransactionScope {
  public:
    TransactionScope(const char* descriptor, uint32_t position);
    ~TransactionScope();
    bool failed() const;
    bool withheld() const;
    // Runs what the service left for after the call.
    void runDeferred();
    TransactionScope(const TransactionScope&) = delete;
    TransactionScope& operator=(const TransactionScope&) = delete;

  private:
    friend void afterCurrentTransaction(std::function<void()> fn);
    Transaction mTransaction;
    const Transaction* mOuter;
    int mOuterState;
    TransactionScope* mOuterScope;
    std::function<void()> mDeferred;
};

// Host controls for simulated services and tests.
// Kills every registration of the service object: calls through existing proxies fail with a
// transport error and linked recipients are told on the transport thread.
void killService(const sp<::android::hidl::base::V1_0::IBase>& service);
// Whether the device's manifest declares the service: a lookup of a declared service that is not
// registered waits for its registration (logging the runtime's warning each second), one of an
// undeclared service answers empty at once. Nothing is declared at first.
void declareService(const std::string& descriptor, const std::string& name, bool declared);
// Calls hook on the looking-up thread at the start of every lookup by name; a test may block there
// to hold the lookup open. An empty hook ends it.
void setLookupHook(
    std::function<void(const std::string& descriptor, const std::string& name)> hook);
// Forgets every registration, declaration and listener (a fresh device).
void resetServiceManager();
// Runs fn on the transport thread, after every report posted before it.
void postToTransport(std::function<void()> fn);
// Returns once every report posted so far has been delivered.
void waitForTransportIdle();
// Death links that live references hold to the service registered as descriptor and name.
size_t deathLinkCount(const std::string& descriptor, const std::string& name);

}  // namespace details
}  // namespace hardware
}  // namespace android

#endif
