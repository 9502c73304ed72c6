// JSON reading and writing for property-list values.
#include "sim/common/json.h"

#include <locale.h>

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace kv::sim {

using platform::Value;

namespace {

// The two-character escapes: the letter written after the backslash and the character meant.
struct Escape {
  char written;
  char meant;
};
constexpr Escape kEscapes[] = {
    {'"', '"'},  {'\\', '\\'}, {'/', '/'},  {'b', '\b'},
    {'f', '\f'}, {'n', '\n'},  {'r', '\r'}, {'t', '\t'},
};

// Returns the escape whose `field` is c, or null. A '/' is read escaped but never written so.
const Escape* findEscape(char c, char Escape::*field) {
  bool writing = field == &Escape::meant;
  for (const Escape& escape : kEscapes) {
    if (escape.*field == c && !(writing && c == '/')) return &escape;
  }
  return nullptr;
}

class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  std::optional<Value> document() {
    skipSpace();
    std::optional<Value> value = parseValue(0);
    if (!value) return std::nullopt;
    skipSpace();
    if (pos_ != text_.size()) return fail("unexpected text after the value");
    return value;
  }

  const std::string& error() const { return error_; }

 private:
  // Records the first error at the current offset; answers false for use in bool paths.
  bool setError(const char* message) {
    if (error_.empty()) error_ = std::string(message) + " at offset " + std::to_string(pos_);
    return false;
  }
  std::nullopt_t fail(const char* message) {
    setError(message);
    return std::nullopt;
  }

  bool atEnd() const { return pos_ >= text_.size(); }
  char peek() const { return atEnd() ? '\0' : text_[pos_]; }

  void skipSpace() {
    while (!atEnd() && (peek() == ' ' || peek() == '\t' || peek() == '\n' || peek() == '\r')) {
      ++pos_;
    }
  }

  bool consumeWord(std::string_view word) {
    if (text_.substr(pos_, word.size()) != word) return false;
    pos_ += word.size();
    return true;
  }

  std::optional<Value> parseValue(int depth) {
    switch (peek()) {
      case '{': return parseObject(depth + 1);
      case '[': return parseArray(depth + 1);
      case '"': {
        std::optional<std::string> s = parseString();
        if (!s) return std::nullopt;
        return Value::string(std::move(*s));
      }
      case 't':
        if (consumeWord("true")) return Value::boolean(true);
        break;
      case 'f':
        if (consumeWord("false")) return Value::boolean(false);
        break;
      case 'n':
        if (consumeWord("null")) return Value();
        break;
      default:
        if (peek() == '-' || (peek() >= '0' && peek() <= '9')) return parseNumber();
        break;
    }
    return fail(atEnd() ? "unexpected end, expected a value" : "expected a value");
  }

  std::optional<Value> parseArray(int depth) {
    if (depth > kMaxJsonDepth) return fail("nesting too deep");
    ++pos_;
    Value::Array items;
    skipSpace();
    if (peek() == ']') {
      ++pos_;
      return Value::array(std::move(items));
    }
    for (;;) {
      skipSpace();
      std::optional<Value> item = parseValue(depth);
      if (!item) return std::nullopt;
      items.push_back(std::move(*item));
      skipSpace();
      if (peek() == ']') {
        ++pos_;
        return Value::array(std::move(items));
      }
      if (peek() != ',') return fail("expected ',' or ']'");
      ++pos_;
    }
  }

  std::optional<Value> parseObject(int depth) {
    if (depth > kMaxJsonDepth) return fail("nesting too deep");
    ++pos_;
    Value::Dictionary entries;
    skipSpace();
    if (peek() == '}') {
      ++pos_;
      return Value::dictionary(std::move(entries));
    }
    for (;;) {
      skipSpace();
      if (peek() != '"') return fail("expected a string key");
      size_t keyOffset = pos_;
      std::optional<std::string> key = parseString();
      if (!key) return std::nullopt;
      skipSpace();
      if (peek() != ':') return fail("expected ':'");
      ++pos_;
      skipSpace();
      std::optional<Value> item = parseValue(depth);
      if (!item) return std::nullopt;
      if (!entries.emplace(std::move(*key), std::move(*item)).second) {
        pos_ = keyOffset;
        return fail("duplicate key");
      }
      skipSpace();
      if (peek() == '}') {
        ++pos_;
        return Value::dictionary(std::move(entries));
      }
      if (peek() != ',') return fail("expected ',' or '}'");
      ++pos_;
    }
  }

  // Reads four hex digits after "\u"; -1 when they are not there.
  int32_t readHex4() {
    if (text_.size() - pos_ < 4) return -1;
    int32_t code = 0;
    for (int i = 0; i < 4; ++i) {
      char c = text_[pos_ + i];
      int digit = c >= '0' && c <= '9'   ? c - '0'
                  : c >= 'a' && c <= 'f' ? c - 'a' + 10
                  : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                         : -1;
      if (digit < 0) return -1;
      code = code * 16 + digit;
    }
    pos_ += 4;
    return code;
  }

  static void appendUtf8(std::string& out, uint32_t code) {
    if (code < 0x80) {
      out += static_cast<char>(code);
    } else if (code < 0x800) {
      out += static_cast<char>(0xC0 | (code >> 6));
      out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
      out += static_cast<char>(0xE0 | (code >> 12));
      out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (code >> 18));
      out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (code & 0x3F));
    }
  }

  // Reads the \u escape whose 'u' is at pos_, joining a surrogate pair into one code point.
  bool parseUnicodeEscape(std::string& out) {
    ++pos_;
    int32_t code = readHex4();
    if (code < 0) return setError("expected four hex digits after \\u");
    if (code >= 0xDC00 && code <= 0xDFFF) return setError("unpaired low surrogate");
    if (code >= 0xD800 && code <= 0xDBFF) {
      if (!consumeWord("\\u")) return setError("expected a low surrogate after a high one");
      int32_t low = readHex4();
      if (low < 0xDC00 || low > 0xDFFF)
        return setError("expected a low surrogate after a high one");
      code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
    }
    appendUtf8(out, static_cast<uint32_t>(code));
    return true;
  }

  std::optional<std::string> parseString() {
    ++pos_;
    std::string out;
    for (;;) {
      if (atEnd()) return fail("unterminated string");
      char c = text_[pos_];
      if (c == '"') {
        ++pos_;
        return out;
      }
      if (static_cast<unsigned char>(c) < 0x20) return fail("control character in string");
      if (c != '\\') {
        out += c;
        ++pos_;
        continue;
      }
      ++pos_;
      if (peek() == 'u') {
        if (!parseUnicodeEscape(out)) return std::nullopt;
        continue;
      }
      const Escape* escape = findEscape(peek(), &Escape::written);
      if (atEnd() || !escape) return fail("invalid escape");
      out += escape->meant;
      ++pos_;
    }
  }

  std::optional<Value> parseNumber() {
    size_t start = pos_;
    auto digits = [&] {
      size_t from = pos_;
      while (!atEnd() && peek() >= '0' && peek() <= '9') ++pos_;
      return pos_ - from;
    };
    if (peek() == '-') ++pos_;
    size_t intStart = pos_;
    size_t intDigits = digits();
    if (intDigits == 0) return fail("expected a digit");
    if (intDigits > 1 && text_[intStart] == '0') {
      pos_ = intStart;
      return fail("leading zero in number");
    }
    bool integral = true;
    if (peek() == '.') {
      ++pos_;
      integral = false;
      if (digits() == 0) return fail("expected a digit after '.'");
    }
    if (peek() == 'e' || peek() == 'E') {
      ++pos_;
      integral = false;
      if (peek() == '+' || peek() == '-') ++pos_;
      if (digits() == 0) return fail("expected a digit in the exponent");
    }
    std::string_view number = text_.substr(start, pos_ - start);
    if (integral) {
      int64_t i = 0;
      auto [end, ec] = std::from_chars(number.data(), number.data() + number.size(), i);
      if (ec == std::errc() && end == number.data() + number.size()) return Value::integer(i);
    }
    // strtod in the C locale rounds correctly; ERANGE on underflow still gives a usable value.
    static const locale_t kCLocale = newlocale(LC_ALL_MASK, "C", nullptr);
    std::string copy(number);
    double d = strtod_l(copy.c_str(), nullptr, kCLocale);
    if (std::isinf(d)) {
      pos_ = start;
      return fail("number out of range");
    }
    return Value::real(d);
  }

  std::string_view text_;
  size_t pos_ = 0;
  std::string error_;
};

void appendString(std::string& out, const std::string& s) {
  out += '"';
  for (char c : s) {
    if (const Escape* escape = findEscape(c, &Escape::meant)) {
      out += '\\';
      out += escape->written;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char buf[8];
      std::snprintf(buf, sizeof buf, "\\u%04x", static_cast<unsigned>(c));
      out += buf;
    } else {
      out += c;
    }
  }
  out += '"';
}

void appendReal(std::string& out, double d) {
  if (!std::isfinite(d)) {
    out += "null";
    return;
  }
  char buf[32];
  auto [end, ec] = std::to_chars(buf, buf + sizeof buf, d);
  std::string_view text(buf, ec == std::errc() ? end - buf : 0);
  out += text;
  if (text.find_first_of(".e") == std::string_view::npos) out += ".0";
}

void appendBase64(std::string& out, const std::vector<uint8_t>& bytes) {
  static constexpr char kAlphabet[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  out += '"';
  for (size_t i = 0; i < bytes.size(); i += 3) {
    uint32_t chunk = uint32_t{bytes[i]} << 16;
    if (i + 1 < bytes.size()) chunk |= uint32_t{bytes[i + 1]} << 8;
    if (i + 2 < bytes.size()) chunk |= bytes[i + 2];
    out += kAlphabet[(chunk >> 18) & 0x3F];
    out += kAlphabet[(chunk >> 12) & 0x3F];
    out += i + 1 < bytes.size() ? kAlphabet[(chunk >> 6) & 0x3F] : '=';
    out += i + 2 < bytes.size() ? kAlphabet[chunk & 0x3F] : '=';
  }
  out += '"';
}

void appendValue(std::string& out, const Value& value) {
  switch (value.kind()) {
    case Value::Kind::kNone: out += "null"; return;
    case Value::Kind::kBool: out += value.asBool() ? "true" : "false"; return;
    case Value::Kind::kInteger: out += std::to_string(value.asInteger()); return;
    case Value::Kind::kReal:
    case Value::Kind::kDate: appendReal(out, value.asReal()); return;
    case Value::Kind::kString: appendString(out, value.asString()); return;
    case Value::Kind::kData: appendBase64(out, value.asData()); return;
    case Value::Kind::kArray: {
      out += '[';
      const char* separator = "";
      for (const Value& item : value.asArray()) {
        out += separator;
        separator = ",";
        appendValue(out, item);
      }
      out += ']';
      return;
    }
    case Value::Kind::kDictionary: {
      out += '{';
      const char* separator = "";
      for (const auto& [key, item] : value.asDictionary()) {
        out += separator;
        separator = ",";
        appendString(out, key);
        out += ':';
        appendValue(out, item);
      }
      out += '}';
      return;
    }
  }
}

}  // namespace

std::optional<Value> parseJson(std::string_view text, std::string* error) {
  Reader reader(text);
  std::optional<Value> value = reader.document();
  if (!value && error) *error = reader.error();
  return value;
}

std::string toJson(const Value& value) {
  std::string out;
  appendValue(out, value);
  return out;
}

}  // namespace kv::sim
