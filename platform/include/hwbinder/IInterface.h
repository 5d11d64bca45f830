// Host build of the link between an interface object and its transport reference.
#ifndef HWBINDER_IINTERFACE_H
#define HWBINDER_IINTERFACE_H

#include <hwbinder/IBinder.h>

namespace android {
namespace hardware {

class IInterface : public virtual RefBase {
  public:
    static sp<IBinder> asBinder(const IInterface* iface) {
        return iface == nullptr ? nullptr : const_cast<IInterface*>(iface)->onAsBinder();
    }

  protected:
    virtual IBinder* onAsBinder() = 0;
};

class BpHwRefBase : public virtual RefBase {
  protected:
    explicit BpHwRefBase(const sp<IBinder>& remote) : mRemote(remote) {}
    IBinder* remote() const { return mRemote.get(); }

  private:
    const sp<IBinder> mRemote;
};

// Base of every generated client proxy.
template <typename INTERFACE>
class BpInterface : public INTERFACE, public IInterface, public BpHwRefBase {
  public:
    explicit BpInterface(const sp<IBinder>& remote) : BpHwRefBase(remote) {}

  protected:
    IBinder* onAsBinder() override { return remote(); }
};

}  // namespace hardware
}  // namespace android

#endif
