// Service-event holder: one object that is both a death recipient and a registration listener,
// and forwards each report to the plain function given for it at construction.
#ifndef HIDLUTIL_H
#define HIDLUTIL_H

#include <android/hidl/base/1.0/IBase.h>
#include <android/hidl/manager/1.0/IServiceNotification.h>
#include <hidl/HidlSupport.h>

class HidlUtil : public ::android::hardware::hidl_death_recipient,
                 public ::android::hidl::manager::V1_0::IServiceNotification {
  public:
    using DeathCallback = void (*)(uint64_t cookie,
                                   const ::android::wp<::android::hidl::base::V1_0::IBase>& who);
    using RegistrationCallback = void (*)(const ::android::hardware::hidl_string& fqName,
                                          const ::android::hardware::hidl_string& name,
                                          bool isPreexisting);

    HidlUtil(DeathCallback onDeath, RegistrationCallback onRegistration);

    void serviceDied(uint64_t cookie,
                     const ::android::wp<::android::hidl::base::V1_0::IBase>& who) override;
    ::android::hardware::Return<void> onRegistration(const ::android::hardware::hidl_string& fqName,
                                                     const ::android::hardware::hidl_string& name,
                                                     bool preexisting) override;

  private:
    const DeathCallback mOnDeath;
    const RegistrationCallback mOnRegistration;
};

#endif
