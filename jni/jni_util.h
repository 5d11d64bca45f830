// JNI argument and result helpers shared by the native methods.
#ifndef KXMMI_JNI_JNI_UTIL_H
#define KXMMI_JNI_JNI_UTIL_H

#include <jni.h>

#include <string>

#include "mmi_log.h"
#include "modified_utf8.h"

namespace kxmmi {

// The modified UTF-8 characters of a Java string argument, held from construction to the end of
// the scope, so that the method's result line can still print them. A null string is never handed
// to JNI: it reads as no characters, and Present() logs "<function> fail, <name> is null".
// Characters JNI cannot hand out (out of memory) read the same way, without a pending exception.
class Utf {
  public:
    Utf(JNIEnv* env, jstring s)
        : mEnv(env),
          mString(s),
          mChars(s == nullptr ? nullptr : env->GetStringUTFChars(s, nullptr)) {
        // Out of memory: the method answers its failure value, never an exception.
        if (s != nullptr && mChars == nullptr) env->ExceptionClear();
    }
    ~Utf() { Release(); }
    // Hands the characters back before the end of the scope, where the order of releases or of
    // later JNI calls matters; c_str() is null afterwards.
    void Release() {
        if (mChars != nullptr) mEnv->ReleaseStringUTFChars(mString, mChars);
        mChars = nullptr;
    }
    Utf(const Utf&) = delete;
    Utf& operator=(const Utf&) = delete;

    bool Present(const char* function, const char* name) const {
        if (mChars != nullptr) return true;
        if (mString == nullptr) {
            KXLOGE("%s: %s fail, %s is null", function, name);
        } else {
            KXLOGE("%s: %s fail, cannot read %s", function, name);
        }
        return false;
    }
    const char* c_str() const { return mChars; }

  private:
    JNIEnv* mEnv;
    jstring mString;
    const char* mChars;
};

// Every text the library hands to Java: a new string of text as valid modified UTF-8, whatever
// bytes a service sent. When the runtime cannot make it (out of memory), the exception is cleared,
// one error line names function, and the answer is a new empty string if one can still be made,
// else null, never with an exception pending.
inline jstring NewJString(JNIEnv* env, const char* function, const char* text) {
    jstring string = env->NewStringUTF(ToModifiedUtf8(text).c_str());
    if (string != nullptr) return string;
    env->ExceptionClear();
    KXLOGE("%s: %s fail, NewStringUTF failed", function);
    string = env->NewStringUTF("");
    if (string == nullptr) env->ExceptionClear();
    return string;
}
inline jstring NewJString(JNIEnv* env, const char* function, const std::string& text) {
    return NewJString(env, function, text.c_str());
}

}  // namespace kxmmi

#endif
