// Host build of the per-process transport state: the host transport has one report thread of its
// own and no thread pool to start.
#ifndef HWBINDER_PROCESSSTATE_H
#define HWBINDER_PROCESSSTATE_H

#include <utils/RefBase.h>
#include <utils/StrongPointer.h>

namespace android {
namespace hardware {

class ProcessState : public virtual RefBase {
  public:
    static sp<ProcessState> self();
    void startThreadPool() {}
};

}  // namespace hardware
}  // namespace android

#endif
