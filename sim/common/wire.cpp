// Frames of Values over a socket.
#include "sim/common/wire.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

namespace kv::sim {

using platform::Value;

namespace {

enum Tag : uint8_t { kNone, kFalse, kTrue, kInteger, kReal, kString, kData, kDate, kArray, kDict };
constexpr int kMaxDepth = 128;
constexpr uint32_t kMaxFrame = 64u << 20;

void putU32(std::string& out, uint32_t v) {
  out.append(reinterpret_cast<const char*>(&v), 4);
}
void put64(std::string& out, const void* p) {
  out.append(static_cast<const char*>(p), 8);
}
void putBytes(std::string& out, const void* p, size_t n) {
  putU32(out, static_cast<uint32_t>(n));
  out.append(static_cast<const char*>(p), n);
}

void encode(std::string& out, const Value& v) {
  switch (v.kind()) {
    case Value::Kind::kNone: out += char(kNone); break;
    case Value::Kind::kBool: out += char(v.asBool() ? kTrue : kFalse); break;
    case Value::Kind::kInteger: {
      out += char(kInteger);
      int64_t i = v.asInteger();
      put64(out, &i);
      break;
    }
    case Value::Kind::kReal:
    case Value::Kind::kDate: {
      out += char(v.kind() == Value::Kind::kReal ? kReal : kDate);
      double d = v.asReal();
      put64(out, &d);
      break;
    }
    case Value::Kind::kString:
      out += char(kString);
      putBytes(out, v.asString().data(), v.asString().size());
      break;
    case Value::Kind::kData:
      out += char(kData);
      putBytes(out, v.asData().data(), v.asData().size());
      break;
    case Value::Kind::kArray:
      out += char(kArray);
      putU32(out, static_cast<uint32_t>(v.asArray().size()));
      for (const auto& item : v.asArray()) encode(out, item);
      break;
    case Value::Kind::kDictionary:
      out += char(kDict);
      putU32(out, static_cast<uint32_t>(v.asDictionary().size()));
      for (const auto& [key, item] : v.asDictionary()) {
        putBytes(out, key.data(), key.size());
        encode(out, item);
      }
      break;
  }
}

class Decoder {
 public:
  explicit Decoder(std::string_view s) : s_(s) {}
  bool done() const { return pos_ == s_.size(); }

  std::optional<Value> value(int depth) {
    if (depth > kMaxDepth || pos_ >= s_.size()) return std::nullopt;
    auto tag = static_cast<uint8_t>(s_[pos_++]);
    switch (tag) {
      case kNone: return Value();
      case kFalse: return Value::boolean(false);
      case kTrue: return Value::boolean(true);
      case kInteger: {
        int64_t i;
        if (!raw(&i, 8)) return std::nullopt;
        return Value::integer(i);
      }
      case kReal:
      case kDate: {
        double d;
        if (!raw(&d, 8)) return std::nullopt;
        return tag == kReal ? Value::real(d) : Value::date(d);
      }
      case kString: {
        auto s = bytes();
        if (!s) return std::nullopt;
        return Value::string(std::string(*s));
      }
      case kData: {
        auto s = bytes();
        if (!s) return std::nullopt;
        return Value::data(std::vector<uint8_t>(s->begin(), s->end()));
      }
      case kArray: {
        uint32_t n;
        if (!raw(&n, 4) || n > s_.size() - pos_) return std::nullopt;
        Value::Array items;
        for (uint32_t i = 0; i < n; ++i) {
          auto item = value(depth + 1);
          if (!item) return std::nullopt;
          items.push_back(std::move(*item));
        }
        return Value::array(std::move(items));
      }
      case kDict: {
        uint32_t n;
        if (!raw(&n, 4) || n > s_.size() - pos_) return std::nullopt;
        Value::Dictionary entries;
        for (uint32_t i = 0; i < n; ++i) {
          auto key = bytes();
          if (!key) return std::nullopt;
          auto item = value(depth + 1);
          if (!item) return std::nullopt;
          entries[std::string(*key)] = std::move(*item);
        }
        return Value::dictionary(std::move(entries));
      }
      default: return std::nullopt;
    }
  }

 private:
  bool raw(void* out, size_t n) {
    if (s_.size() - pos_ < n) return false;
    std::memcpy(out, s_.data() + pos_, n);
    pos_ += n;
    return true;
  }
  std::optional<std::string_view> bytes() {
    uint32_t n;
    if (!raw(&n, 4) || s_.size() - pos_ < n) return std::nullopt;
    auto out = s_.substr(pos_, n);
    pos_ += n;
    return out;
  }

  std::string_view s_;
  size_t pos_ = 0;
};

const std::string kNoOp;

}  // namespace

std::string encodeValue(const Value& value) {
  std::string out;
  encode(out, value);
  return out;
}

std::optional<Value> decodeValue(std::string_view bytes) {
  Decoder decoder(bytes);
  auto v = decoder.value(0);
  if (!v || !decoder.done()) return std::nullopt;
  return v;
}

Channel::~Channel() {
  close();
}

void Channel::close() {
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
}

bool Channel::send(const Value& message) {
  if (fd_ < 0) return false;
  std::string body = encodeValue(message);
  std::string frame;
  putU32(frame, static_cast<uint32_t>(body.size()));
  frame += body;
  size_t done = 0;
  while (done < frame.size()) {
    ssize_t n = ::write(fd_, frame.data() + done, frame.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    done += static_cast<size_t>(n);
  }
  return true;
}

bool Channel::readFully(char* out, size_t n, int timeoutMs, std::string* why) {
  using Clock = std::chrono::steady_clock;
  auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs < 0 ? 0 : timeoutMs);
  size_t done = 0;
  while (done < n) {
    int wait = -1;
    if (timeoutMs >= 0) {
      auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
      wait = static_cast<int>(std::max<int64_t>(0, left.count()));
    }
    pollfd p{fd_, POLLIN, 0};
    int ready = ::poll(&p, 1, wait);
    if (ready < 0 && errno == EINTR) continue;
    if (ready == 0) {
      if (why) *why = "timed out";
      return false;
    }
    ssize_t got = ::read(fd_, out + done, n - done);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) {
      if (why) *why = "closed";
      return false;
    }
    done += static_cast<size_t>(got);
  }
  return true;
}

std::optional<Value> Channel::receive(int timeoutMs, std::string* why) {
  if (fd_ < 0) {
    if (why) *why = "closed";
    return std::nullopt;
  }
  uint32_t length = 0;
  if (!readFully(reinterpret_cast<char*>(&length), 4, timeoutMs, why)) return std::nullopt;
  if (length > kMaxFrame) {
    if (why) *why = "oversized frame";
    return std::nullopt;
  }
  std::string body(length, '\0');
  if (!readFully(body.data(), length, timeoutMs, why)) return std::nullopt;
  auto v = decodeValue(body);
  if (!v && why) *why = "broken frame";
  return v;
}

Value message(const char* op, Value::Dictionary fields) {
  fields["op"] = Value::string(op);
  return Value::dictionary(std::move(fields));
}

const std::string& opOf(const Value& message) {
  const Value& op = message["op"];
  return op.kind() == Value::Kind::kString ? op.asString() : kNoOp;
}

}  // namespace kv::sim
