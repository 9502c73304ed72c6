// A plain C++ property-list value.
#include "platform/value.h"

#include <cmath>
#include <cstdio>

namespace kv::platform {

namespace {
const std::string kEmptyString;
const std::vector<uint8_t> kEmptyData;
const Value::Array kEmptyArray;
const Value::Dictionary kEmptyDictionary;
const Value kNoneValue;

void appendQuoted(std::string& out, const std::string& s) {
  out += '"';
  for (char c : s) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char buf[8];
      std::snprintf(buf, sizeof buf, "\\u%04x", c);
      out += buf;
    } else {
      out += c;
    }
  }
  out += '"';
}
}  // namespace

Value Value::boolean(bool b) {
  Value v;
  v.kind_ = Kind::kBool;
  v.bool_ = b;
  return v;
}
Value Value::integer(int64_t i) {
  Value v;
  v.kind_ = Kind::kInteger;
  v.integer_ = i;
  return v;
}
Value Value::real(double d) {
  Value v;
  v.kind_ = Kind::kReal;
  v.real_ = d;
  return v;
}
Value Value::string(std::string s) {
  Value v;
  v.kind_ = Kind::kString;
  v.string_ = std::move(s);
  return v;
}
Value Value::data(std::vector<uint8_t> bytes) {
  Value v;
  v.kind_ = Kind::kData;
  v.data_ = std::move(bytes);
  return v;
}
Value Value::date(double secondsSinceReferenceDate) {
  Value v;
  v.kind_ = Kind::kDate;
  v.real_ = secondsSinceReferenceDate;
  return v;
}
Value Value::array(Array items) {
  Value v;
  v.kind_ = Kind::kArray;
  v.array_ = std::move(items);
  return v;
}
Value Value::dictionary(Dictionary entries) {
  Value v;
  v.kind_ = Kind::kDictionary;
  v.dictionary_ = std::move(entries);
  return v;
}

bool Value::asBool(bool fallback) const {
  return kind_ == Kind::kBool ? bool_ : fallback;
}

int64_t Value::asInteger(int64_t fallback) const {
  if (kind_ == Kind::kInteger) return integer_;
  if (kind_ == Kind::kReal && std::isfinite(real_) && std::fabs(real_) < 9.2e18) {
    return static_cast<int64_t>(real_);
  }
  return fallback;
}

double Value::asReal(double fallback) const {
  if (kind_ == Kind::kReal || kind_ == Kind::kDate) return real_;
  if (kind_ == Kind::kInteger) return static_cast<double>(integer_);
  return fallback;
}

const std::string& Value::asString() const {
  return kind_ == Kind::kString ? string_ : kEmptyString;
}
const std::vector<uint8_t>& Value::asData() const {
  return kind_ == Kind::kData ? data_ : kEmptyData;
}
const Value::Array& Value::asArray() const {
  return kind_ == Kind::kArray ? array_ : kEmptyArray;
}
const Value::Dictionary& Value::asDictionary() const {
  return kind_ == Kind::kDictionary ? dictionary_ : kEmptyDictionary;
}

const Value& Value::operator[](const std::string& key) const {
  if (kind_ != Kind::kDictionary) return kNoneValue;
  auto it = dictionary_.find(key);
  return it == dictionary_.end() ? kNoneValue : it->second;
}

bool Value::operator==(const Value& o) const {
  if (kind_ != o.kind_) return false;
  switch (kind_) {
    case Kind::kNone: return true;
    case Kind::kBool: return bool_ == o.bool_;
    case Kind::kInteger: return integer_ == o.integer_;
    case Kind::kReal:
    case Kind::kDate: return real_ == o.real_;
    case Kind::kString: return string_ == o.string_;
    case Kind::kData: return data_ == o.data_;
    case Kind::kArray: return array_ == o.array_;
    case Kind::kDictionary: return dictionary_ == o.dictionary_;
  }
  return false;
}

std::string Value::describe() const {
  std::string out;
  switch (kind_) {
    case Kind::kNone: return "null";
    case Kind::kBool: return bool_ ? "true" : "false";
    case Kind::kInteger: return std::to_string(integer_);
    case Kind::kReal:
    case Kind::kDate: {
      char buf[32];
      std::snprintf(buf, sizeof buf, "%.17g", real_);
      out = buf;
      if (kind_ == Kind::kDate) out = "date(" + out + ")";
      return out;
    }
    case Kind::kString: appendQuoted(out, string_); return out;
    case Kind::kData: return "<" + std::to_string(data_.size()) + " bytes>";
    case Kind::kArray:
      out = "[";
      for (size_t i = 0; i < array_.size(); ++i) {
        if (i) out += ',';
        out += array_[i].describe();
      }
      return out + "]";
    case Kind::kDictionary: {
      out = "{";
      bool first = true;
      for (const auto& [k, v] : dictionary_) {
        if (!first) out += ',';
        first = false;
        appendQuoted(out, k);
        out += ':';
        out += v.describe();
      }
      return out + "}";
    }
  }
  return out;
}

}  // namespace kv::platform
