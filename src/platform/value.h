// A plain C++ property-list value: what the library reads out of Foundation
// objects (preferences, message payloads) and builds to hand back.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace kv::platform {

class Value {
 public:
  enum class Kind { kNone, kBool, kInteger, kReal, kString, kData, kDate, kArray, kDictionary };
  using Array = std::vector<Value>;
  using Dictionary = std::map<std::string, Value>;

  Value() = default;
  static Value boolean(bool b);
  static Value integer(int64_t i);
  static Value real(double d);
  static Value string(std::string s);
  static Value data(std::vector<uint8_t> bytes);
  static Value date(double secondsSinceReferenceDate);
  static Value array(Array items);
  static Value dictionary(Dictionary entries);

  Kind kind() const { return kind_; }
  bool isNone() const { return kind_ == Kind::kNone; }

  // Typed reads; each answers its fallback when the value is of another kind.
  bool asBool(bool fallback = false) const;
  int64_t asInteger(int64_t fallback = 0) const;  // kInteger or kReal (truncated)
  double asReal(double fallback = 0) const;       // kReal, kDate or kInteger
  const std::string& asString() const;            // empty unless kString
  const std::vector<uint8_t>& asData() const;
  const Array& asArray() const;
  const Dictionary& asDictionary() const;

  // Returns the entry `key` of a dictionary, or a none value.
  const Value& operator[](const std::string& key) const;

  bool operator==(const Value& other) const;

  // A compact JSON-like rendering for logs and test messages.
  std::string describe() const;

 private:
  Kind kind_ = Kind::kNone;
  bool bool_ = false;
  int64_t integer_ = 0;
  double real_ = 0;
  std::string string_;
  std::vector<uint8_t> data_;
  Array array_;
  Dictionary dictionary_;
};

}  // namespace kv::platform
