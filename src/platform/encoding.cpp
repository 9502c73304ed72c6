// Type-encoding parsing and call-compatibility.
#include "platform/encoding.h"

#include <cctype>
#include <optional>
#include <vector>

namespace kv::platform {

namespace {

constexpr int kMaxDepth = 32;

#if KV_APPLE_RUNTIME
constexpr char kLongSize = '4';  // Apple encodes 64-bit long as 'q'; 'l' is 32-bit
#else
constexpr char kLongSize = sizeof(long) == 8 ? '8' : '4';
#endif

// Reads encodings one type at a time, reducing each to its calling class:
// "o" object, ":" selector, "p" pointer, "i1".."i8" integers, "f", "d", "D",
// "v", "{name=fields}" and "(name=fields)" aggregates.
class Reader {
 public:
  explicit Reader(std::string_view s) : s_(s) {}

  bool atEnd() const { return pos_ >= s_.size(); }

  // Reads one type (with leading qualifiers and trailing offset); nullopt
  // when malformed.
  std::optional<std::string> next() {
    skipQualifiers();
    auto type = readType(0);
    if (type) skipOffset();
    return type;
  }

 private:
  void skipQualifiers() {
    while (pos_ < s_.size() &&
           std::string_view("rnNoORVA").find(s_[pos_]) != std::string_view::npos) {
      ++pos_;
    }
  }
  void skipOffset() {
    if (pos_ < s_.size() && s_[pos_] == '-') ++pos_;
    while (pos_ < s_.size() && std::isdigit(static_cast<unsigned char>(s_[pos_]))) ++pos_;
  }
  bool skipQuoted() {  // "name"
    if (pos_ >= s_.size() || s_[pos_] != '"') return true;
    auto end = s_.find('"', pos_ + 1);
    if (end == std::string_view::npos) return false;
    pos_ = end + 1;
    return true;
  }

  std::optional<std::string> readType(int depth) {
    if (depth > kMaxDepth || pos_ >= s_.size()) return std::nullopt;
    char c = s_[pos_++];
    switch (c) {
      case '@':
        if (pos_ < s_.size() && s_[pos_] == '?')
          ++pos_;  // block
        else if (!skipQuoted())
          return std::nullopt;  // @"ClassName"
        return "o";
      case '#': return "o";
      case ':': return ":";
      case 'v': return "v";
      case 'c':
      case 'C':
      case 'B': return "i1";
      case 's':
      case 'S': return "i2";
      case 'i':
      case 'I': return "i4";
      case 'l':
      case 'L': return std::string("i") + kLongSize;
      case 'q':
      case 'Q': return "i8";
      case 'f': return "f";
      case 'd': return "d";
      case 'D': return "D";
      case '*':
      case '?': return "p";
      case '^': {
        skipQualifiers();
        if (pos_ < s_.size() && s_[pos_] == '{') {  // pointer to a struct: name only
          int nesting = 0;
          for (; pos_ < s_.size(); ++pos_) {
            if (s_[pos_] == '{') ++nesting;
            if (s_[pos_] == '}' && --nesting == 0) break;
          }
          if (pos_ >= s_.size()) return std::nullopt;
          ++pos_;
          return "p";
        }
        if (!readType(depth + 1)) return std::nullopt;
        return "p";
      }
      case '[': {  // C array: as an argument it is a pointer
        while (pos_ < s_.size() && std::isdigit(static_cast<unsigned char>(s_[pos_]))) ++pos_;
        auto element = readType(depth + 1);
        if (!element || pos_ >= s_.size() || s_[pos_] != ']') return std::nullopt;
        ++pos_;
        return "p";
      }
      case 'b': {  // bitfield
        size_t start = pos_;
        while (pos_ < s_.size() && std::isdigit(static_cast<unsigned char>(s_[pos_]))) ++pos_;
        if (pos_ == start) return std::nullopt;
        return "b" + std::string(s_.substr(start, pos_ - start));
      }
      case '{':
      case '(': {
        char close = c == '{' ? '}' : ')';
        size_t nameEnd = pos_;
        while (nameEnd < s_.size() && s_[nameEnd] != '=' && s_[nameEnd] != close) ++nameEnd;
        if (nameEnd >= s_.size()) return std::nullopt;
        std::string out(1, c);
        out += s_.substr(pos_, nameEnd - pos_);
        pos_ = nameEnd;
        if (s_[pos_] == '=') {
          ++pos_;
          out += '=';
          while (pos_ < s_.size() && s_[pos_] != close) {
            if (!skipQuoted()) return std::nullopt;  // field name
            skipQualifiers();
            auto field = readType(depth + 1);
            if (!field) return std::nullopt;
            out += *field;
            out += ',';
          }
          if (pos_ >= s_.size()) return std::nullopt;
          if (out.back() == '=') out.pop_back();  // "{Name=}" says no more than "{Name}"
        }
        ++pos_;  // the closing bracket
        out += close;
        return out;
      }
      default: return std::nullopt;
    }
  }

  std::string_view s_;
  size_t pos_ = 0;
};

std::optional<std::vector<std::string>> parseMethod(std::string_view encoding) {
  Reader reader(encoding);
  std::vector<std::string> types;
  while (!reader.atEnd()) {
    auto type = reader.next();
    if (!type) return std::nullopt;
    types.push_back(std::move(*type));
    if (types.size() > 64) return std::nullopt;
  }
  if (types.empty()) return std::nullopt;
  return types;
}

// Returns true iff two reduced aggregate types agree: the same name (an
// anonymous '?' matches any) and, when both spell out their fields, the same
// fields.
bool aggregatesAgree(const std::string& a, const std::string& b) {
  auto split = [](const std::string& t) {
    auto eq = t.find('=');
    std::string name = t.substr(1, (eq == std::string::npos ? t.size() - 1 : eq) - 1);
    std::string body = eq == std::string::npos ? std::string() : t.substr(eq);
    return std::pair{name, body};
  };
  auto [nameA, bodyA] = split(a);
  auto [nameB, bodyB] = split(b);
  if (nameA != nameB && nameA != "?" && nameB != "?") return false;
  if (!bodyA.empty() && !bodyB.empty() && bodyA != bodyB) return false;
  return !(nameA == "?" && nameB == "?" && (bodyA.empty() || bodyB.empty()));
}

bool typesAgree(const std::string& a, const std::string& b) {
  if (a.empty() || b.empty()) return false;
  if (a == b) return true;
  if ((a[0] == '{' || a[0] == '(') && a[0] == b[0]) return aggregatesAgree(a, b);
  return a == b;
}

}  // namespace

bool encodingsCompatible(std::string_view actual, std::string_view expected) {
  auto a = parseMethod(actual);
  auto e = parseMethod(expected);
  if (!a || !e || a->size() != e->size()) return false;
  for (size_t i = 0; i < a->size(); ++i) {
    if (!typesAgree((*a)[i], (*e)[i])) return false;
  }
  return true;
}

int encodingArgumentCount(std::string_view encoding) {
  auto types = parseMethod(encoding);
  return types ? static_cast<int>(types->size()) - 1 : -1;
}

}  // namespace kv::platform
