#include <HidlUtil.h>

HidlUtil::HidlUtil(DeathCallback onDeath, RegistrationCallback onRegistration)
    : mOnDeath(onDeath), mOnRegistration(onRegistration) {}

void HidlUtil::serviceDied(uint64_t cookie,
                           const ::android::wp<::android::hidl::base::V1_0::IBase>& who) {
    if (mOnDeath != nullptr) mOnDeath(cookie, who);
}

::android::hardware::Return<void> HidlUtil::onRegistration(
    const ::android::hardware::hidl_string& fqName, const ::android::hardware::hidl_string& name,
    bool preexisting) {
    if (mOnRegistration != nullptr) mOnRegistration(fqName, name, preexisting);
    return ::android::hardware::Void();
}
