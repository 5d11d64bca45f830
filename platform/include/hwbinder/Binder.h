// Host build of the service side of an object reference: generated stubs derive from it and
// answer transactions in onTransact.
#ifndef HWBINDER_BINDER_H
#define HWBINDER_BINDER_H

#include <hwbinder/IBinder.h>

namespace android {
namespace hardware {

class BHwBinder : public IBinder {
  public:
    status_t transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags = 0,
                      TransactCallback callback = nullptr) final {
        return onTransact(code, data, reply, flags, std::move(callback));
    }
    // A local object never dies apart from its process.
    status_t linkToDeath(const sp<DeathRecipient>&, void* = nullptr, uint32_t = 0) override {
        return INVALID_OPERATION;
    }
    status_t unlinkToDeath(const wp<DeathRecipient>&, void* = nullptr, uint32_t = 0,
                           wp<DeathRecipient>* = nullptr) override {
        return INVALID_OPERATION;
    }
    BHwBinder* localBinder() override { return this; }

    // Scheduling and caller-identity settings of a device's thread pool; no meaning on host.
    void setRequestingSid(bool) {}

  protected:
    virtual status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags,
                                TransactCallback callback) = 0;
    int mSchedPolicy = 0;
    int mSchedPriority = 0;
};

}  // namespace hardware
}  // namespace android

#endif
