// Binary property lists, decoded defensively.
#include "sim/common/bplist.h"

#include <cstring>
#include <vector>

namespace kv::sim {

using platform::Value;

namespace {

constexpr size_t kHeaderSize = 8;  // "bplist00"
constexpr size_t kTrailerSize = 32;
constexpr int kMaxDepth = 512;         // no preferences file nests anywhere near this
constexpr size_t kMaxValues = 200000;  // values decoded, shared objects counted each time

// Appends code point `c` to `out` as UTF-8.
void appendUtf8(std::string& out, uint32_t c) {
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | (c >> 6));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | (c >> 12));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (c >> 18));
    out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  }
}

class Decoder {
 public:
  explicit Decoder(std::span<const uint8_t> bytes) : b_(bytes) {}

  std::optional<Value> decode(std::string* problem) {
    std::optional<Value> top = readTrailer() ? object(top_, 0) : std::nullopt;
    if (!top) *problem = problem_;
    return top;
  }

 private:
  bool fail(std::string why) {
    if (problem_.empty()) problem_ = std::move(why);
    return false;
  }
  std::nullopt_t failed(std::string why) {
    fail(std::move(why));
    return std::nullopt;
  }

  // An unsigned big-endian number of `size` bytes (1 to 8) at `at`; the
  // caller has checked that they lie in the file.
  uint64_t number(size_t at, size_t size) const {
    uint64_t n = 0;
    for (size_t i = 0; i < size; ++i) n = (n << 8) | b_[at + i];
    return n;
  }

  bool readTrailer() {
    if (b_.size() < kHeaderSize + 1 + kTrailerSize)
      return fail("too short for a binary property list");
    if (std::memcmp(b_.data(), "bplist", 6) != 0) return fail("wrong magic");
    if (b_[6] != '0' || b_[7] != '0') return fail("unknown format version");
    size_t t = b_.size() - kTrailerSize;
    offsetSize_ = b_[t + 6];
    refSize_ = b_[t + 7];
    uint64_t count = number(t + 8, 8);
    uint64_t top = number(t + 16, 8);
    uint64_t table = number(t + 24, 8);
    if (offsetSize_ < 1 || offsetSize_ > 8) return fail("bad offset size in the trailer");
    if (refSize_ < 1 || refSize_ > 8) return fail("bad object reference size in the trailer");
    if (table < kHeaderSize || table > t) return fail("offset table outside the file");
    if (count == 0 || count > (t - table) / offsetSize_) {
      return fail("object count does not fit the offset table");
    }
    if (top >= count) return fail("top object out of range");
    tableOffset_ = static_cast<size_t>(table);
    count_ = static_cast<size_t>(count);
    top_ = static_cast<size_t>(top);
    onPath_.assign(count_, false);
    return true;
  }

  // True iff `size` bytes from `at` lie among the objects (before the table).
  bool fits(size_t at, uint64_t size) const {
    return at <= tableOffset_ && size <= tableOffset_ - at;
  }

  // The length a marker's low nibble gives, or the integer object after it
  // when the nibble is 0xF; *start is where the object's contents begin.
  bool length(size_t at, uint8_t low, uint64_t* out, size_t* start) {
    if (low != 0x0F) {
      *out = low;
      *start = at + 1;
      return true;
    }
    if (!fits(at + 1, 1)) return fail("count past the objects");
    uint8_t marker = b_[at + 1];
    if ((marker >> 4) != 0x1 || (marker & 0x0F) > 3) return fail("count is not an integer");
    size_t size = size_t{1} << (marker & 0x0F);
    if (!fits(at + 2, size)) return fail("count past the objects");
    *out = number(at + 2, size);
    *start = at + 2 + size;
    return true;
  }

  std::optional<Value> object(size_t ref, int depth) {
    if (depth > kMaxDepth) return failed("nested too deeply");
    if (++decoded_ > kMaxValues) return failed("too many values");
    if (onPath_[ref]) return failed("object " + std::to_string(ref) + " contains itself");
    size_t at = static_cast<size_t>(number(tableOffset_ + ref * offsetSize_, offsetSize_));
    if (at < kHeaderSize || at >= tableOffset_) {
      return failed("offset of object " + std::to_string(ref) + " out of range");
    }
    onPath_[ref] = true;
    std::optional<Value> v = contents(ref, at, depth);
    onPath_[ref] = false;
    return v;
  }

  std::optional<Value> contents(size_t ref, size_t at, int depth) {
    uint8_t marker = b_[at];
    uint8_t high = marker >> 4, low = marker & 0x0F;
    std::string which = "object " + std::to_string(ref);
    switch (high) {
      case 0x0:
        if (marker == 0x00) return Value();
        if (marker == 0x08 || marker == 0x09) return Value::boolean(marker == 0x09);
        break;
      case 0x1: {  // integers of 1, 2, 4, 8 (signed) or 16 bytes
        if (low > 4) break;
        size_t size = size_t{1} << low;
        if (!fits(at + 1, size)) return failed(which + " runs past the objects");
        size_t from = size == 16 ? at + 9 : at + 1;  // the low 64 bits of a 128-bit one
        return Value::integer(static_cast<int64_t>(number(from, size == 16 ? 8 : size)));
      }
      case 0x2: {
        if (low != 2 && low != 3) break;
        size_t size = size_t{1} << low;
        if (!fits(at + 1, size)) return failed(which + " runs past the objects");
        uint64_t bits = number(at + 1, size);
        if (size == 4) {
          float f;
          uint32_t narrow = static_cast<uint32_t>(bits);
          std::memcpy(&f, &narrow, sizeof f);
          return Value::real(f);
        }
        double d;
        std::memcpy(&d, &bits, sizeof d);
        return Value::real(d);
      }
      case 0x3: {
        if (low != 3) break;
        if (!fits(at + 1, 8)) return failed(which + " runs past the objects");
        uint64_t bits = number(at + 1, 8);
        double d;
        std::memcpy(&d, &bits, sizeof d);
        return Value::date(d);
      }
      case 0x4:
      case 0x5:
      case 0x6: return bytesObject(which, at, high, low);
      case 0x8: {
        size_t size = size_t{low} + 1;
        if (size > 8 || !fits(at + 1, size)) return failed(which + " is a bad UID");
        return Value::dictionary(
            {{"CF$UID", Value::integer(static_cast<int64_t>(number(at + 1, size)))}});
      }
      case 0xA:
      case 0xC:
      case 0xD: return collection(which, at, high, low, depth);
      default: break;
    }
    char hex[8];
    std::snprintf(hex, sizeof hex, "0x%02x", marker);
    return failed(which + " has an unknown marker " + hex);
  }

  // Data, an ASCII string or a UTF-16 string.
  std::optional<Value> bytesObject(const std::string& which, size_t at, uint8_t high, uint8_t low) {
    uint64_t n = 0;
    size_t start = 0;
    if (!length(at, low, &n, &start)) return std::nullopt;
    uint64_t unit = high == 0x6 ? 2 : 1;
    if (n > (tableOffset_ - std::min(start, tableOffset_)) / unit || !fits(start, n * unit)) {
      return failed(which + " runs past the objects");
    }
    const uint8_t* p = b_.data() + start;
    if (high == 0x4) return Value::data(std::vector<uint8_t>(p, p + n));
    std::string text;
    if (high == 0x5) {
      for (uint64_t i = 0; i < n; ++i) {
        if (p[i] >= 0x80) return failed(which + " is not ASCII");
        text += static_cast<char>(p[i]);
      }
      return Value::string(std::move(text));
    }
    for (uint64_t i = 0; i < n; ++i) {
      uint32_t c = (uint32_t{p[2 * i]} << 8) | p[2 * i + 1];
      if (c >= 0xD800 && c <= 0xDBFF && i + 1 < n) {
        uint32_t next = (uint32_t{p[2 * i + 2]} << 8) | p[2 * i + 3];
        if (next >= 0xDC00 && next <= 0xDFFF) {
          appendUtf8(text, 0x10000 + ((c - 0xD800) << 10) + (next - 0xDC00));
          ++i;
          continue;
        }
      }
      if (c >= 0xD800 && c <= 0xDFFF) return failed(which + " has an unpaired surrogate");
      appendUtf8(text, c);
    }
    return Value::string(std::move(text));
  }

  // An array, a set (read as an array) or a dictionary.
  std::optional<Value> collection(const std::string& which, size_t at, uint8_t high, uint8_t low,
                                  int depth) {
    uint64_t n = 0;
    size_t start = 0;
    if (!length(at, low, &n, &start)) return std::nullopt;
    uint64_t refs = high == 0xD ? 2 : 1;
    uint64_t room = (tableOffset_ - std::min(start, tableOffset_)) / refSize_;
    if (n > room / refs) return failed(which + " has more entries than the file");
    auto refAt = [&](uint64_t i) -> std::optional<size_t> {
      uint64_t r = number(start + i * refSize_, refSize_);
      if (r >= count_) {
        fail(which + " refers to object " + std::to_string(r) + " of " + std::to_string(count_));
        return std::nullopt;
      }
      return static_cast<size_t>(r);
    };
    if (high != 0xD) {
      Value::Array items;
      for (uint64_t i = 0; i < n; ++i) {
        auto r = refAt(i);
        auto item = r ? object(*r, depth + 1) : std::nullopt;
        if (!item) return std::nullopt;
        items.push_back(std::move(*item));
      }
      return Value::array(std::move(items));
    }
    Value::Dictionary entries;
    for (uint64_t i = 0; i < n; ++i) {
      auto k = refAt(i);
      auto v = k ? refAt(n + i) : std::nullopt;
      auto key = v ? object(*k, depth + 1) : std::nullopt;
      if (!key) return std::nullopt;
      if (key->kind() != Value::Kind::kString) {
        return failed(which + " has a key that is not a string");
      }
      auto value = object(*v, depth + 1);
      if (!value) return std::nullopt;
      entries[key->asString()] = std::move(*value);
    }
    return Value::dictionary(std::move(entries));
  }

  std::span<const uint8_t> b_;
  size_t offsetSize_ = 0;
  size_t refSize_ = 0;
  size_t tableOffset_ = 0;
  size_t count_ = 0;
  size_t top_ = 0;
  size_t decoded_ = 0;
  std::vector<bool> onPath_;
  std::string problem_;
};

}  // namespace

bool looksLikeBinaryPlist(std::span<const uint8_t> bytes) {
  return bytes.size() >= 6 && std::memcmp(bytes.data(), "bplist", 6) == 0;
}

std::optional<Value> decodeBinaryPlist(std::span<const uint8_t> bytes, std::string* problem) {
  return Decoder(bytes).decode(problem);
}

}  // namespace kv::sim
