// Host build of the transport's object reference: what a client proxy calls and what a service
// stub answers. The host transport's references are in-process (see HostTransport.h).
#ifndef HWBINDER_IBINDER_H
#define HWBINDER_IBINDER_H

#include <hwbinder/Parcel.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>
#include <utils/StrongPointer.h>

#include <functional>

namespace android {
namespace hardware {

class BHwBinder;

class IBinder : public virtual RefBase {
  public:
    enum { FLAG_ONEWAY = 0x00000001 };
    using TransactCallback = std::function<void(Parcel&)>;

    class DeathRecipient : public virtual RefBase {
      public:
        virtual void binderDied(const wp<IBinder>& who) = 0;
    };

    virtual status_t transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags = 0,
                              TransactCallback callback = nullptr) = 0;
    virtual status_t linkToDeath(const sp<DeathRecipient>& recipient, void* cookie = nullptr,
                                 uint32_t flags = 0) = 0;
    virtual status_t unlinkToDeath(const wp<DeathRecipient>& recipient, void* cookie = nullptr,
                                   uint32_t flags = 0,
                                   wp<DeathRecipient>* outRecipient = nullptr) = 0;
    virtual BHwBinder* localBinder() { return nullptr; }
};

}  // namespace hardware
}  // namespace android

#include <hwbinder/Binder.h>

#endif
