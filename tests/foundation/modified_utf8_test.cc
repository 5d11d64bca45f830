// The conversion of service texts into what JNI's NewStringUTF takes.
#include "modified_utf8.h"

#include <gtest/gtest.h>

#include <string>

#include "modified_utf8_check.h"

namespace {

TEST(ModifiedUtf8, KeepsValidTextReplacesMaximalIllFormedSubpartsAndSplitsFourByteForms) {
    const std::string fffd = "\xEF\xBF\xBD";
    const struct {
        const char* what;
        std::string in, out;
    } cases[] = {
        // Valid modified UTF-8 stays byte for byte.
        {"empty", "", ""},
        {"ascii and two- and three-byte forms", "caf\xC3\xA9 \xE2\x82\xAC", ""},
        {"U+0000 as C0 80",
         "a\xC0\x80"
         "b",
         ""},
        {"a surrogate pair in three-byte halves", "\xED\xA0\xBD\xED\xB8\x80", ""},
        {"a lone surrogate", "\xED\xA0\x80", ""},
        {"the highest three-byte forms", "\xEF\xBF\xBF\xE0\xA0\x80", ""},
        // Four-byte forms become surrogate pairs.
        {"U+1F600", "\xF0\x9F\x98\x80 ok", "\xED\xA0\xBD\xED\xB8\x80 ok"},
        {"U+10000", "\xF0\x90\x80\x80", "\xED\xA0\x80\xED\xB0\x80"},
        {"U+10FFFF", "\xF4\x8F\xBF\xBF", "\xED\xAF\xBF\xED\xBF\xBF"},
        // One U+FFFD per maximal ill-formed subpart.
        {"a byte that starts nothing",
         "A\xFF"
         "B",
         "A" + fffd + "B"},
        {"stray continuation bytes", "\x80\xBF", fffd + fffd},
        {"overlong two-byte forms", "\xC0\xAF\xC1\xBF", fffd + fffd + fffd + fffd},
        {"overlong three-byte form", "\xE0\x80\xAF", fffd + fffd + fffd},
        {"overlong four-byte form", "\xF0\x8F\xBF\xBF", fffd + fffd + fffd + fffd},
        {"above U+10FFFF", "\xF4\x90\x80\x80\xF5", fffd + fffd + fffd + fffd + fffd},
        {"missing continuation",
         "\xE2\x82"
         "A\xF0\x9F\x98"
         "B",
         fffd + "A" + fffd + "B"},
        {"cut off by the end", "x\xF0\x9F\x98", "x" + fffd},
        {"the standard's example",
         "a\xF1\x80\x80\xE1\x80\xC2"
         "b\x80"
         "c\x80\xBF"
         "d",
         "a" + fffd + fffd + fffd + "b" + fffd + "c" + fffd + fffd + "d"},
        // The text ends at its first zero byte.
        {"embedded zero", std::string("ab\0\xFF", 4), "ab"},
    };
    for (const auto& c : cases) {
        const std::string expected = c.out.empty() ? c.in.substr(0, c.in.find('\0')) : c.out;
        const std::string converted = kxmmi::ToModifiedUtf8(c.in.c_str());
        EXPECT_EQ(converted, expected) << c.what;
        EXPECT_TRUE(kxtest::IsModifiedUtf8(converted)) << c.what;
    }
}

// The checker the agent and the fuzz target judge by, on the forms it must refuse.
TEST(ModifiedUtf8, CheckerRefusesWhatNewStringUtfIsNotDefinedFor) {
    const char* const refused[] = {
        "\xF0\x9F\x98\x80",     "\xC1\xBF", "\xE0\x9F\xBF", "\x80", "\xC3", "\xE2\x82",
        "\xF8\x88\x80\x80\x80", "\xC3\x28"};
    for (const char* text : refused)
        EXPECT_FALSE(kxtest::IsModifiedUtf8(text)) << testing::PrintToString(std::string(text));
    EXPECT_FALSE(kxtest::IsModifiedUtf8(std::string("a\0", 2)));
    EXPECT_TRUE(kxtest::IsModifiedUtf8("\xC0\x80\xED\xA0\xBD\xED\xB8\x80\xDF\xBF"));
}

}  // namespace
