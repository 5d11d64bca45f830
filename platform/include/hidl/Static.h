// Host build of the transport's process-wide tables that generated code registers with: the
// stub and passthrough constructors per interface descriptor, and the stub cache per service.
#ifndef HIDL_STATIC_H
#define HIDL_STATIC_H

#include <android/hidl/base/1.0/IBase.h>
#include <hwbinder/IBinder.h>
#include <sched.h>

#ifndef SCHED_NORMAL
#define SCHED_NORMAL SCHED_OTHER  // the kernel's name for the default policy
#endif

#include <functional>
#include <map>
#include <mutex>
#include <string>

namespace android {
namespace hardware {
namespace details {

template <typename K, typename V>
class ConcurrentMap {
  public:
    void set(const K& k, V v) {
        std::lock_guard<std::mutex> lock(mLock);
        mMap[k] = std::move(v);
    }
    V get(const K& k, const V& def) const {
        std::lock_guard<std::mutex> lock(mLock);
        auto it = mMap.find(k);
        return it == mMap.end() ? def : it->second;
    }
    void erase(const K& k) {
        std::lock_guard<std::mutex> lock(mLock);
        mMap.erase(k);
    }
    void eraseIfEqual(const K& k, const V& v) {
        std::lock_guard<std::mutex> lock(mLock);
        auto it = mMap.find(k);
        if (it != mMap.end() && it->second == v) mMap.erase(it);
    }

  private:
    mutable std::mutex mLock;
    std::map<K, V> mMap;
};

struct SchedPrio {
    int sched_policy;
    int prio;
};

using BnConstructorMap = ConcurrentMap<std::string, std::function<sp<IBinder>(void*)>>;
using BsConstructorMap =
    ConcurrentMap<std::string, std::function<sp<::android::hidl::base::V1_0::IBase>(void*)>>;
BnConstructorMap& getBnConstructorMap();
BsConstructorMap& getBsConstructorMap();

using ServiceKey = wp<::android::hidl::base::V1_0::IBase>;
// The stub serving each local service object, so that it is made once.
extern ConcurrentMap<ServiceKey, wp<BHwBinder>>* const gBnMap;
// Scheduling and caller-identity settings per service; never set on host.
extern ConcurrentMap<ServiceKey, SchedPrio>* const gServicePrioMap;
extern ConcurrentMap<ServiceKey, bool>* const gServiceSidMap;

}  // namespace details
}  // namespace hardware
}  // namespace android

#endif
