// The factory service's generic information items, shared by the manufacturing-data methods and
// the signature and memory-card commands.
#ifndef KXMMI_JNI_FACTORY_INFO_H
#define KXMMI_JNI_FACTORY_INFO_H

#include <cstdint>
#include <optional>

#include "hal_call.h"

namespace kxmmi {

// Kinds that select an item of getFactoryInfo / setFactoryInfo.
constexpr int32_t kInfoBsn = 0;
constexpr int32_t kInfoMmiAutoStart = 5;
constexpr int32_t kInfoSignature = 11;
constexpr int32_t kInfoZqCardTest = 14;

// getFactoryInfo's code (preset -1) and text for kind, through the call's own handle; nothing
// after function's empty-handle or transport-error line.
std::optional<CodeText<int32_t>> ReadFactoryInfo(int32_t kind, const char* function);

}  // namespace kxmmi

#endif
