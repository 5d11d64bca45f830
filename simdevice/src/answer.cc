// Answer texts: parsing, canonical form, and fitting an answer to an operation's shape.
#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cinttypes>
#include <climits>
#include <cstdlib>

#include "internal.h"

namespace simdevice {

namespace {

constexpr std::string_view kNoCallback = "nocallback";
constexpr std::string_view kTransportError = "transport-error";
constexpr std::string_view kCrash = "crash";
constexpr std::string_view kBytes = "bytes:";
constexpr const char* kBytesHint =
    "bytes:HEX takes pairs of hex digits 0-9 a-f (bytes:41ff42 is the three bytes 41 FF 42)";

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsWordChar(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || IsDigit(c) || c == '-' || c == '_';
}

// The value of a hexadecimal digit, or -1.
int HexDigit(char c) {
    if (IsDigit(c)) return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Recursive-descent reader of one answer text. Errors name the 1-based column.
class Parser {
  public:
    explicit Parser(std::string_view text) : text_(text) {}

    std::optional<Answer> Parse(std::string* error) {
        std::string_view trimmed = Trimmed();
        if (trimmed.empty()) {
            return Fail(error, "empty answer; expected values separated by commas, " +
                                   std::string(kNoCallback) + ", " + std::string(kTransportError) +
                                   " or " + std::string(kCrash));
        }
        if (trimmed == kNoCallback) return Answer::NoCallback();
        if (trimmed == kTransportError) return Answer::TransportError();
        if (trimmed == kCrash) return Answer::Crash();
        std::vector<Answer::Value> values;
        for (;;) {
            SkipSpace();
            std::optional<Answer::Value> value = ReadValue();
            if (!value) return Fail(error, error_);
            values.push_back(std::move(*value));
            SkipSpace();
            if (AtEnd()) break;
            if (text_[pos_] != ',') {
                return Fail(error, At("expected ',' between values, found " + Found()));
            }
            ++pos_;
            SkipSpace();
            if (AtEnd()) return Fail(error, At("expected a value after ','"));
        }
        return Answer::Values(std::move(values));
    }

  private:
    std::string_view Trimmed() const {
        size_t b = 0, e = text_.size();
        while (b < e && IsSpace(text_[b])) ++b;
        while (e > b && IsSpace(text_[e - 1])) --e;
        return text_.substr(b, e - b);
    }
    bool AtEnd() const { return pos_ >= text_.size(); }
    void SkipSpace() {
        while (!AtEnd() && IsSpace(text_[pos_])) ++pos_;
    }
    std::string At(const std::string& what) const {
        return "column " + std::to_string(pos_ + 1) + ": " + what;
    }
    std::string Found() const {
        if (AtEnd()) return "the end";
        size_t end = pos_ + 1;
        while (end < text_.size() && IsWordChar(text_[pos_]) && IsWordChar(text_[end])) ++end;
        return "'" + std::string(text_.substr(pos_, end - pos_)) + "'";
    }
    static std::nullopt_t Fail(std::string* error, const std::string& message) {
        if (error != nullptr) *error = message;
        return std::nullopt;
    }
    std::nullopt_t Error(const std::string& message) {
        error_ = At(message);
        return std::nullopt;
    }

    std::optional<Answer::Value> ReadValue() {
        if (AtEnd()) return Error("expected a value");
        char c = text_[pos_];
        if (c == '"') return ReadString();
        if (c == '[') return ReadVector();
        if (text_.substr(pos_, kBytes.size()) == kBytes) return ReadBytes();
        return ReadBare();
    }

    // Anything else up to the next comma outside quotes and brackets, as a shell leaves a value
    // whose quotes it took: true, false, an integer, or else the text itself.
    std::optional<Answer::Value> ReadBare() {
        size_t start = pos_;
        int depth = 0;
        size_t end = pos_;
        for (; end < text_.size(); ++end) {
            char c = text_[end];
            if (c == '"') {
                while (++end < text_.size() && text_[end] != '"') {
                    if (text_[end] == '\\') ++end;
                }
                if (end >= text_.size()) break;
            } else if (c == '[') {
                ++depth;
            } else if (c == ']') {
                --depth;
            } else if (c == ',' && depth <= 0) {
                break;
            }
        }
        std::string_view word = text_.substr(start, std::min(end, text_.size()) - start);
        while (!word.empty() && IsSpace(word.back())) word.remove_suffix(1);
        if (word.empty()) return Error("expected a value");
        if (word == "true" || word == "false") {
            pos_ = start + word.size();
            return Answer::Value(word == "true");
        }
        if (IsNumber(word)) {
            if (word.find_first_of(".eE") != std::string_view::npos) {
                return Error("not an integer: '" + std::string(word) + "'");
            }
            std::optional<int64_t> v = ReadInteger();
            if (!v) return std::nullopt;
            return Answer::Value(*v);
        }
        if (word == "null") return Error("null is not a value; an empty text is \"\"");
        pos_ = start + word.size();
        return Answer::Value(std::string(word));
    }

    // A number as JSON writes it; only integers are answers, the others are refused as such.
    static bool IsNumber(std::string_view w) {
        size_t i = 0;
        auto digits = [&] {
            size_t from = i;
            while (i < w.size() && IsDigit(w[i])) ++i;
            return i > from;
        };
        if (i < w.size() && w[i] == '-') ++i;
        if (!digits()) return false;
        if (i < w.size() && w[i] == '.') {
            ++i;
            if (!digits()) return false;
        }
        if (i < w.size() && (w[i] == 'e' || w[i] == 'E')) {
            ++i;
            if (i < w.size() && (w[i] == '-' || w[i] == '+')) ++i;
            if (!digits()) return false;
        }
        return i == w.size();
    }

    std::optional<int64_t> ReadInteger() {
        size_t start = pos_;
        if (text_[pos_] == '-') ++pos_;
        if (AtEnd() || !IsDigit(text_[pos_])) {
            pos_ = start;
            return Error("expected digits after '-'");
        }
        while (!AtEnd() && IsDigit(text_[pos_])) ++pos_;
        if (!AtEnd() && IsWordChar(text_[pos_])) {
            size_t end = pos_;
            while (end < text_.size() && IsWordChar(text_[end])) ++end;
            std::string word(text_.substr(start, end - start));
            pos_ = start;
            return Error("not a decimal integer: '" + word + "'");
        }
        std::string digits(text_.substr(start, pos_ - start));
        errno = 0;
        long long v = std::strtoll(digits.c_str(), nullptr, 10);
        if (errno == ERANGE) {
            pos_ = start;
            return Error("integer " + digits + " is out of the 64-bit range");
        }
        return static_cast<int64_t>(v);
    }

    std::optional<Answer::Value> ReadVector() {
        ++pos_;  // '['
        std::vector<int32_t> values;
        SkipSpace();
        if (!AtEnd() && text_[pos_] == ']') {
            ++pos_;
            return Answer::Value(std::move(values));
        }
        for (;;) {
            SkipSpace();
            if (AtEnd()) return Error("unterminated vector, expected ']'");
            if (text_[pos_] != '-' && !IsDigit(text_[pos_])) {
                return Error("vectors hold integers only, found " + Found());
            }
            size_t start = pos_;
            std::optional<int64_t> v = ReadInteger();
            if (!v) return std::nullopt;
            if (*v < INT32_MIN || *v > INT32_MAX) {
                pos_ = start;
                return Error("vector element " + std::to_string(*v) + " is out of the int32 range");
            }
            values.push_back(static_cast<int32_t>(*v));
            SkipSpace();
            if (AtEnd()) return Error("unterminated vector, expected ']'");
            if (text_[pos_] == ']') {
                ++pos_;
                return Answer::Value(std::move(values));
            }
            if (text_[pos_] != ',') return Error("expected ',' or ']' in vector, found " + Found());
            ++pos_;
        }
    }

    std::optional<uint32_t> ReadHex4() {
        if (text_.size() - pos_ < 4) return Error("\\u needs four hex digits");
        uint32_t v = 0;
        for (size_t i = 0; i < 4; ++i) {
            int d = HexDigit(text_[pos_ + i]);
            if (d < 0) return Error("\\u needs four hex digits");
            v = v * 16 + static_cast<uint32_t>(d);
        }
        pos_ += 4;
        return v;
    }

    // A text given as its bytes in hexadecimal, for bytes no quoted string can carry as they are.
    std::optional<Answer::Value> ReadBytes() {
        pos_ += kBytes.size();
        std::string out;
        while (!AtEnd() && HexDigit(text_[pos_]) >= 0) {
            if (pos_ + 1 >= text_.size() || HexDigit(text_[pos_ + 1]) < 0) {
                return Error(kBytesHint);
            }
            out.push_back(
                static_cast<char>(HexDigit(text_[pos_]) * 16 + HexDigit(text_[pos_ + 1])));
            pos_ += 2;
        }
        size_t after = pos_;
        while (after < text_.size() && IsSpace(text_[after])) ++after;
        if (after < text_.size() && text_[after] != ',') return Error(kBytesHint);
        return Answer::Value(std::move(out));
    }

    std::optional<Answer::Value> ReadString() {
        size_t open = pos_;
        ++pos_;
        std::string out;
        for (;;) {
            if (AtEnd()) {
                pos_ = open;
                return Error("unterminated string");
            }
            char c = text_[pos_];
            if (c == '"') {
                ++pos_;
                return Answer::Value(std::move(out));
            }
            if (static_cast<unsigned char>(c) < 0x20) {
                return Error("control character in string; write it as \\uXXXX");
            }
            if (c != '\\') {
                out.push_back(c);
                ++pos_;
                continue;
            }
            ++pos_;
            if (AtEnd()) continue;  // reported as unterminated
            char e = text_[pos_++];
            switch (e) {
                case '"':
                case '\\':
                case '/':
                    out.push_back(e);
                    break;
                case 'b':
                    out.push_back('\b');
                    break;
                case 'f':
                    out.push_back('\f');
                    break;
                case 'n':
                    out.push_back('\n');
                    break;
                case 'r':
                    out.push_back('\r');
                    break;
                case 't':
                    out.push_back('\t');
                    break;
                case 'u': {
                    std::optional<uint32_t> cp = ReadHex4();
                    if (!cp) return std::nullopt;
                    if (*cp >= 0xDC00 && *cp <= 0xDFFF) {
                        return Error("\\u escape is a lone low surrogate");
                    }
                    if (*cp >= 0xD800 && *cp <= 0xDBFF) {
                        if (text_.substr(pos_, 2) != "\\u") {
                            return Error("high surrogate must be followed by a \\u low surrogate");
                        }
                        pos_ += 2;
                        std::optional<uint32_t> low = ReadHex4();
                        if (!low) return std::nullopt;
                        if (*low < 0xDC00 || *low > 0xDFFF) {
                            return Error("high surrogate must be followed by a \\u low surrogate");
                        }
                        *cp = 0x10000 + ((*cp - 0xD800) << 10) + (*low - 0xDC00);
                    }
                    AppendUtf8(*cp, &out);
                    break;
                }
                default:
                    --pos_;
                    return Error(std::string("unknown escape \\") + e +
                                 " (known: \\\" \\\\ \\/ \\b \\f \\n \\r \\t \\uXXXX)");
            }
        }
    }

    std::string_view text_;
    size_t pos_ = 0;
    std::string error_;
};

std::string ValueText(const Answer::Value& value) {
    if (const auto* i = std::get_if<int64_t>(&value)) return std::to_string(*i);
    if (const auto* b = std::get_if<bool>(&value)) return *b ? "true" : "false";
    if (const auto* s = std::get_if<std::string>(&value))
        return internal::Quote(std::string_view(*s));
    std::string out = "[";
    const auto& v = std::get<std::vector<int32_t>>(value);
    for (size_t i = 0; i < v.size(); ++i) {
        if (i != 0) out += ',';
        out += std::to_string(v[i]);
    }
    return out + "]";
}

const char* ValueKind(const Answer::Value& value) {
    switch (value.index()) {
        case 0:
            return "an integer";
        case 1:
            return "a bool";
        case 2:
            return "a string";
        default:
            return "a vector";
    }
}

// Checks one value against the field's type; integers are narrowed where the type asks.
bool FitValue(const Field& field, const Answer::Value& value, std::string* why) {
    switch (field.type) {
        case Type::kInt32:
        case Type::kDisplayRet:
            if (const auto* i = std::get_if<int64_t>(&value)) {
                if (*i >= INT32_MIN && *i <= INT32_MAX) return true;
                *why = std::to_string(*i) + " is out of the int32 range";
                return false;
            }
            break;
        case Type::kInt64:
            if (std::holds_alternative<int64_t>(value)) return true;
            break;
        case Type::kBool:
            if (std::holds_alternative<bool>(value)) return true;
            break;
        case Type::kString:
            if (std::holds_alternative<std::string>(value)) return true;
            break;
        case Type::kInt32Vector:
            if (std::holds_alternative<std::vector<int32_t>>(value)) return true;
            break;
        case Type::kFmdMsg:
        case Type::kFmdOperation:
            break;
    }
    *why = "expected " + std::string(TypeName(field.type)) + " " + field.name + ", got " +
           ValueKind(value) + " (" + ValueText(value) + ")";
    return false;
}

Answer::Value ZeroOf(Type type) {
    switch (type) {
        case Type::kBool:
            return false;
        case Type::kString:
            return std::string();
        case Type::kInt32Vector:
            return std::vector<int32_t>();
        default:
            return int64_t{0};
    }
}

}  // namespace

void AppendUtf8(uint32_t cp, std::string* out) {
    if (cp < 0x80) {
        out->push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
        out->push_back(static_cast<char>(0xC0 | (cp >> 6)));
        out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
        out->push_back(static_cast<char>(0xE0 | (cp >> 12)));
        out->push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
        out->push_back(static_cast<char>(0xF0 | (cp >> 18)));
        out->push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
        out->push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
}

const std::vector<AnswerKeyword>& AnswerKeywords() {
    static const std::vector<AnswerKeyword> kKeywords = {
        {kNoCallback.data(), true, "the service returns without calling back"},
        {kTransportError.data(), false, "the call fails in the middle; the service lives on"},
        {kCrash.data(), false,
         "the service dies in the middle of the call, its clients are told, and it registers "
         "again after the restart delay"},
    };
    return kKeywords;
}

const std::vector<AnswerForm>& AnswerForms() {
    static const std::vector<AnswerForm> kForms = {
        {"integer", "-3", "decimal, within the range of the value it stands for"},
        {"bool", "true", "true or false"},
        {"string", "\"a\\\"b \\u00e9\"", "a JSON string"},
        {"bytes", "bytes:41ff42", "a text given as its bytes in hexadecimal, any bytes at all"},
        {"vector", "[1,2,3]", "integers in brackets"},
        {"word", "charging", "any other text up to the next comma, as the text itself"},
    };
    return kForms;
}

namespace internal {

namespace {

// Edits (insert, delete, replace a character) that turn a into b.
size_t Distance(std::string_view a, std::string_view b) {
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            size_t above = row[j];
            row[j] =
                std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
            diagonal = above;
        }
    }
    return row[b.size()];
}

}  // namespace

std::string ExplainRefusal(std::string_view text, const std::string& error) {
    std::string word(text);
    while (!word.empty() && IsSpace(word.back())) word.pop_back();
    while (!word.empty() && IsSpace(word.front())) word.erase(0, 1);
    bool is_word = !word.empty() && std::isalpha(static_cast<unsigned char>(word[0]));
    for (char c : word) is_word = is_word && IsWordChar(c) && !IsDigit(c);
    for (const AnswerKeyword& k : AnswerKeywords()) is_word = is_word && word != k.word;
    if (!is_word) return error;
    std::string lower;
    for (char c : word) lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    for (const AnswerKeyword& k : AnswerKeywords()) {
        if (Distance(lower, k.word) > 3) continue;
        std::string forms = "an answer is ";
        for (const AnswerKeyword& each : AnswerKeywords()) forms += std::string(each.word) + ", ";
        forms += "or values separated by commas (";
        for (const AnswerForm& f : AnswerForms()) {
            forms += std::string(&f == &AnswerForms().front() ? "" : ", ") + f.example;
        }
        return "unknown answer keyword " + word + " (did you mean " + k.word + "?); " + forms + ")";
    }
    return error;
}

}  // namespace internal

std::optional<Answer> Answer::Parse(std::string_view text, std::string* error) {
    return Parser(text).Parse(error);
}

Answer Answer::Values(std::vector<Value> values) {
    return Answer(Kind::kValues, std::move(values));
}
Answer Answer::NoCallback() { return Answer(Kind::kNoCallback, {}); }
Answer Answer::TransportError() { return Answer(Kind::kTransportError, {}); }
Answer Answer::Crash() { return Answer(Kind::kCrash, {}); }

std::string Answer::ToString() const {
    switch (kind_) {
        case Kind::kNoCallback:
            return std::string(kNoCallback);
        case Kind::kTransportError:
            return std::string(kTransportError);
        case Kind::kCrash:
            return std::string(kCrash);
        case Kind::kValues:
            break;
    }
    std::string out;
    for (size_t i = 0; i < values_.size(); ++i) {
        if (i != 0) out += ',';
        out += ValueText(values_[i]);
    }
    return out;
}

const char* TypeName(Type type) {
    switch (type) {
        case Type::kInt32:
            return "int32";
        case Type::kInt64:
            return "int64";
        case Type::kBool:
            return "bool";
        case Type::kString:
            return "string";
        case Type::kInt32Vector:
            return "int32[]";
        case Type::kFmdMsg:
            return "FmdMsg";
        case Type::kFmdOperation:
            return "FmdOperation";
        case Type::kDisplayRet:
            return "DISPLAY_RET";
    }
    return "?";
}

std::string OperationInfo::Shape() const {
    std::string out = callback ? "callback: " : "value: ";
    for (size_t i = 0; i < answers.size(); ++i) {
        if (i != 0) out += ", ";
        out += TypeName(answers[i].type);
        out += ' ';
        out += answers[i].name;
    }
    return out;
}

namespace internal {

std::optional<Answer> FitAnswer(const OperationInfo& info, const Answer& answer,
                                std::string* error) {
    auto fail = [&](const std::string& why) -> std::optional<Answer> {
        if (error != nullptr)
            *error = std::string(info.name) + " answers " + info.Shape() + "; " + why;
        return std::nullopt;
    };
    switch (answer.kind()) {
        case Answer::Kind::kTransportError:
        case Answer::Kind::kCrash:
            return answer;
        case Answer::Kind::kNoCallback:
            if (info.callback) return answer;
            return fail("nocallback applies to callback answers only (use transport-error)");
        case Answer::Kind::kValues:
            break;
    }
    const std::vector<Answer::Value>& given = answer.values();
    if (!info.callback && given.size() != 1) {
        return fail("expected exactly one value, got " + std::to_string(given.size()));
    }
    if (given.size() > info.answers.size()) {
        return fail("expected at most " + std::to_string(info.answers.size()) + " values, got " +
                    std::to_string(given.size()));
    }
    std::vector<Answer::Value> fitted;
    for (size_t i = 0; i < info.answers.size(); ++i) {
        if (i >= given.size()) {
            fitted.push_back(ZeroOf(info.answers[i].type));
            continue;
        }
        std::string why;
        if (!FitValue(info.answers[i], given[i], &why)) {
            return fail("value " + std::to_string(i + 1) + ": " + why);
        }
        fitted.push_back(given[i]);
    }
    return Answer::Values(std::move(fitted));
}

}  // namespace internal
}  // namespace simdevice
