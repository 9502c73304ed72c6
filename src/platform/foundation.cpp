// Conversions between Foundation objects and plain C++ values.
#include "platform/foundation.h"

#include <cctype>
#include <cstring>
#include <string>

#include "platform/runtime.h"

namespace kv::platform {

namespace {

constexpr UInteger kUTF8StringEncoding = 4;
constexpr int kMaxNesting = 64;

const Sel kAlloc("alloc");
const Sel kInit("init");
const Sel kAutorelease("autorelease");
const Sel kRelease("release");
const Sel kInitWithBytes("initWithBytes:length:encoding:");
const Sel kUTF8String("UTF8String");
const Sel kObjCType("objCType");
const Sel kLongLongValue("longLongValue");
const Sel kDoubleValue("doubleValue");
const Sel kNumberWithBool("numberWithBool:");
const Sel kNumberWithInt("numberWithInt:");
const Sel kNumberWithLongLong("numberWithLongLong:");
const Sel kNumberWithDouble("numberWithDouble:");
const Sel kCount("count");
const Sel kObjectAtIndex("objectAtIndex:");
const Sel kObjectForKey("objectForKey:");
const Sel kAllKeys("allKeys");
const Sel kArray("array");
const Sel kAddObject("addObject:");
const Sel kDictionary("dictionary");
const Sel kSetObjectForKey("setObject:forKey:");
const Sel kBytes("bytes");
const Sel kLength("length");
const Sel kDataWithBytes("dataWithBytes:length:");
const Sel kTimeIntervalSinceReferenceDate("timeIntervalSinceReferenceDate");
const Sel kDateWithTimeInterval("dateWithTimeIntervalSinceReferenceDate:");
const Sel kValueForKey("valueForKey:");

Class cls(const char* name) {
  return classNamed(name);
}

// Returns true iff the NSNumber `obj` holds a boolean. Foundation keeps
// booleans in a class of their own (__NSCFBoolean on a device, NSBoolNumber in
// GNUstep); where it does not, the type encoding of BOOL/bool decides.
bool isBooleanNumber(id obj) {
  static Class boolClass = nullptr;
  static Class intClass = nullptr;
  if (boolClass == nullptr) {
    boolClass = object_getClass(sendClass<id>(cls("NSNumber"), kNumberWithBool, BOOL{1}));
    intClass = object_getClass(sendClass<id>(cls("NSNumber"), kNumberWithLongLong, 7LL));
  }
  if (boolClass != intClass) return object_getClass(obj) == boolClass;
  const char* type = send<const char*>(obj, kObjCType);
  return type != nullptr && (std::strcmp(type, "B") == 0 || std::strcmp(type, "c") == 0);
}

Value valueOf(id obj, int depth) {
  if (obj == nullptr || depth > kMaxNesting) return {};
  if (isKindOf(obj, "NSString")) return Value::string(toString(obj));
  if (isKindOf(obj, "NSNumber")) {
    if (isBooleanNumber(obj)) return Value::boolean(send<long long>(obj, kLongLongValue) != 0);
    const char* type = send<const char*>(obj, kObjCType);
    if (type != nullptr && (type[0] == 'f' || type[0] == 'd')) {
      return Value::real(send<double>(obj, kDoubleValue));
    }
    return Value::integer(send<long long>(obj, kLongLongValue));
  }
  if (isKindOf(obj, "NSData")) {
    auto* bytes = send<const uint8_t*>(obj, kBytes);
    UInteger length = send<UInteger>(obj, kLength);
    return Value::data(bytes == nullptr ? std::vector<uint8_t>{}
                                        : std::vector<uint8_t>(bytes, bytes + length));
  }
  if (isKindOf(obj, "NSDate"))
    return Value::date(send<double>(obj, kTimeIntervalSinceReferenceDate));
  if (isKindOf(obj, "NSArray")) {
    Value::Array items;
    UInteger n = send<UInteger>(obj, kCount);
    items.reserve(n);
    for (UInteger i = 0; i < n; ++i) {
      items.push_back(valueOf(send<id>(obj, kObjectAtIndex, i), depth + 1));
    }
    return Value::array(std::move(items));
  }
  if (isKindOf(obj, "NSDictionary")) {
    Value::Dictionary entries;
    id keys = send<id>(obj, kAllKeys);
    UInteger n = send<UInteger>(keys, kCount);
    for (UInteger i = 0; i < n; ++i) {
      id key = send<id>(keys, kObjectAtIndex, i);
      auto name = stringOf(key);
      if (!name) continue;
      entries.emplace(*name, valueOf(send<id>(obj, kObjectForKey, key), depth + 1));
    }
    return Value::dictionary(std::move(entries));
  }
  return {};
}

}  // namespace

id makeString(std::string_view s) {
  id str = sendClass<id>(cls("NSString"), kAlloc);
  str = send<id>(str, kInitWithBytes, static_cast<const void*>(s.data()),
                 static_cast<UInteger>(s.size()), kUTF8StringEncoding);
  return send<id>(str, kAutorelease);
}

namespace {

// NSString, looked up once it exists: asked on every guard decision.
Class stringClass() {
  static Class found = nullptr;
  if (found == nullptr) found = cls("NSString");
  return found;
}

}  // namespace

std::optional<std::string> stringOf(id obj) {
  if (!isKindOf(obj, stringClass())) return std::nullopt;
  const char* utf8 = send<const char*>(obj, kUTF8String);
  return std::string(utf8 == nullptr ? "" : utf8);
}

std::optional<std::string_view> utf8Of(id obj) {
  if (!isKindOf(obj, stringClass())) return std::nullopt;
  const char* utf8 = send<const char*>(obj, kUTF8String);
  return std::string_view(utf8 == nullptr ? "" : utf8);
}

std::string toString(id obj) {
  return stringOf(obj).value_or(std::string());
}

std::optional<int64_t> integerOf(id obj) {
  if (!isKindOf(obj, "NSNumber")) return std::nullopt;
  return send<long long>(obj, kLongLongValue);
}

std::optional<double> realOf(id obj) {
  if (!isKindOf(obj, "NSNumber")) return std::nullopt;
  return send<double>(obj, kDoubleValue);
}

std::optional<bool> boolOf(id obj) {
  if (!isKindOf(obj, "NSNumber") || !isBooleanNumber(obj)) return std::nullopt;
  return send<long long>(obj, kLongLongValue) != 0;
}

std::optional<std::vector<std::string>> stringListOf(id obj) {
  if (!isKindOf(obj, "NSArray")) return std::nullopt;
  std::vector<std::string> out;
  UInteger n = send<UInteger>(obj, kCount);
  for (UInteger i = 0; i < n; ++i) {
    auto s = stringOf(send<id>(obj, kObjectAtIndex, i));
    if (!s) return std::nullopt;
    out.push_back(std::move(*s));
  }
  return out;
}

id makeBool(bool b) {
  return sendClass<id>(cls("NSNumber"), kNumberWithBool, static_cast<BOOL>(b ? 1 : 0));
}
id makeInt(int i) {
  return sendClass<id>(cls("NSNumber"), kNumberWithInt, i);
}
id makeInteger(int64_t i) {
  return sendClass<id>(cls("NSNumber"), kNumberWithLongLong, static_cast<long long>(i));
}
id makeReal(double d) {
  return sendClass<id>(cls("NSNumber"), kNumberWithDouble, d);
}

id makeStringList(const std::vector<std::string>& items) {
  id array = sendClass<id>(cls("NSMutableArray"), kArray);
  for (const auto& s : items) send<void>(array, kAddObject, makeString(s));
  return array;
}

id makeDictionary(std::initializer_list<std::pair<const char*, id>> entries) {
  id dictionary = sendClass<id>(cls("NSMutableDictionary"), kDictionary);
  for (const auto& [key, value] : entries) {
    if (value != nullptr) send<void>(dictionary, kSetObjectForKey, value, makeString(key));
  }
  return dictionary;
}

id makeArray(std::initializer_list<id> items) {
  id array = sendClass<id>(cls("NSMutableArray"), kArray);
  for (id item : items) {
    if (item != nullptr) send<void>(array, kAddObject, item);
  }
  return array;
}

Value valueOf(id obj) {
  return valueOf(obj, 0);
}

id makeObject(const Value& value) {
  switch (value.kind()) {
    case Value::Kind::kNone: return nullptr;
    case Value::Kind::kBool: return makeBool(value.asBool());
    case Value::Kind::kInteger: return makeInteger(value.asInteger());
    case Value::Kind::kReal: return makeReal(value.asReal());
    case Value::Kind::kString: return makeString(value.asString());
    case Value::Kind::kData: {
      const auto& bytes = value.asData();
      return sendClass<id>(cls("NSData"), kDataWithBytes, static_cast<const void*>(bytes.data()),
                           static_cast<UInteger>(bytes.size()));
    }
    case Value::Kind::kDate:
      return sendClass<id>(cls("NSDate"), kDateWithTimeInterval, value.asReal());
    case Value::Kind::kArray: {
      id array = sendClass<id>(cls("NSMutableArray"), kArray);
      for (const auto& item : value.asArray()) {
        id element = makeObject(item);
        if (element != nullptr) send<void>(array, kAddObject, element);
      }
      return array;
    }
    case Value::Kind::kDictionary: {
      id dict = sendClass<id>(cls("NSMutableDictionary"), kDictionary);
      for (const auto& [key, item] : value.asDictionary()) {
        id element = makeObject(item);
        // A key that is not UTF-8 makes no string; the entry is dropped
        // rather than raising in setObject:forKey:.
        id name = makeString(key);
        if (element != nullptr && name != nullptr)
          send<void>(dict, kSetObjectForKey, element, name);
      }
      return dict;
    }
  }
  return nullptr;
}

id valueForKey(id obj, const char* key) {
  if (obj == nullptr || key == nullptr || !respondsTo(obj, kValueForKey)) return nullptr;
  return send<id>(obj, kValueForKey, makeString(key));
}

id valueForKeyIfPresent(id obj, const char* key) {
  if (obj == nullptr || key == nullptr || *key == '\0') return nullptr;
  std::string name(key);
  std::string capitalised = name;
  capitalised[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(capitalised[0])));
  bool found = false;
  for (const std::string& getter : {name, "get" + capitalised, "is" + capitalised, "_" + name}) {
    found = found || respondsTo(obj, selector(getter.c_str()));
  }
  for (const std::string& ivarName : {"_" + name, "_is" + capitalised, name, "is" + capitalised}) {
    found = found || ivarAddress(obj, ivarName.c_str()) != nullptr;
  }
  return found ? valueForKey(obj, key) : nullptr;
}

id objectForKey(id dict, const char* key) {
  if (key == nullptr || !isKindOf(dict, "NSDictionary")) return nullptr;
  return send<id>(dict, kObjectForKey, makeString(key));
}

UInteger arrayCount(id array) {
  return isKindOf(array, "NSArray") ? send<UInteger>(array, kCount) : 0;
}

id arrayObjectAt(id array, UInteger i) {
  if (i >= arrayCount(array)) return nullptr;
  return send<id>(array, kObjectAtIndex, i);
}

AutoreleasePool::AutoreleasePool()
    : pool_(send<id>(sendClass<id>(classNamed("NSAutoreleasePool"), kAlloc), kInit)) {}

AutoreleasePool::~AutoreleasePool() {
  send<void>(pool_, kRelease);
}

}  // namespace kv::platform
