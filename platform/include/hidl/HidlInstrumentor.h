// Host build of the instrumentation base of generated proxies and stubs: it only keeps the names
// it is given, since the host loads no instrumentation libraries.
#ifndef HIDL_HIDLINSTRUMENTOR_H
#define HIDL_HIDLINSTRUMENTOR_H

#include <string>
#include <utility>

namespace android {
namespace hardware {
namespace details {

class HidlInstrumentor {
  public:
    HidlInstrumentor(std::string package, std::string interface)
        : mPackage(std::move(package)), mInterface(std::move(interface)) {}
    virtual ~HidlInstrumentor() = default;
    bool isInstrumentationEnabled() const { return false; }

  protected:
    void configureInstrumentation(bool /*log*/ = true) {}

  private:
    std::string mPackage;
    std::string mInterface;
};

}  // namespace details
}  // namespace hardware
}  // namespace android

#endif
