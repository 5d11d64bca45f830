// Host build of the queue on which passthrough wrappers run oneway calls: they run at once.
#ifndef HIDL_TASKRUNNER_H
#define HIDL_TASKRUNNER_H

#include <cstddef>
#include <functional>

namespace android {
namespace hardware {
namespace details {

class TaskRunner {
  public:
    void start(size_t /*limit*/) {}
    bool push(const std::function<void()>& task) {
        if (task) task();
        return true;
    }
};

}  // namespace details
}  // namespace hardware
}  // namespace android

#endif
