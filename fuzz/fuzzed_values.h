// Property-list values built from a fuzzer's bytes: any kind, nested, with
// strings and keys drawn partly from the names the code under test looks
// for, so that the fuzzer reaches the branches behind them quickly.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "platform/value.h"

namespace kv::fuzz {

using platform::Value;

// Words the code under test compares against, plus a few plain ones.
class Words {
 public:
  Words(std::initializer_list<const char*> words) : words_(words.begin(), words.end()) {}

  // A word from the list, or arbitrary text (one time in four).
  std::string pick(FuzzedDataProvider& in) const {
    if (words_.empty() || in.ConsumeIntegralInRange<int>(0, 3) == 0) {
      return in.ConsumeRandomLengthString(24);
    }
    return words_[in.ConsumeIntegralInRange<size_t>(0, words_.size() - 1)];
  }

 private:
  std::vector<std::string> words_;
};

// A value of any kind; containers nest up to `depth` levels.
inline Value fuzzedValue(FuzzedDataProvider& in, const Words& words, int depth = 3) {
  int kind = in.ConsumeIntegralInRange<int>(0, depth > 0 ? 9 : 7);
  switch (kind) {
    case 0: return Value::boolean(in.ConsumeBool());
    case 1: return Value::integer(in.ConsumeIntegral<int64_t>());
    case 2: return Value::integer(in.ConsumeIntegralInRange<int64_t>(-3, 12));
    case 3: return Value::real(in.ConsumeFloatingPoint<double>());
    case 4: return Value::string(words.pick(in));
    case 5: return Value::string(in.ConsumeRandomLengthString(40));
    case 6: return Value::data(in.ConsumeBytes<uint8_t>(in.ConsumeIntegralInRange<size_t>(0, 16)));
    case 7: return Value::date(in.ConsumeFloatingPointInRange<double>(-1e9, 1e9));
    case 8: {
      Value::Array items;
      for (int n = in.ConsumeIntegralInRange<int>(0, 6); n > 0 && in.remaining_bytes() > 0; --n) {
        items.push_back(fuzzedValue(in, words, depth - 1));
      }
      return Value::array(std::move(items));
    }
    default: {
      Value::Dictionary entries;
      for (int n = in.ConsumeIntegralInRange<int>(0, 6); n > 0 && in.remaining_bytes() > 0; --n) {
        std::string key = words.pick(in);
        entries[key] = fuzzedValue(in, words, depth - 1);
      }
      return Value::dictionary(std::move(entries));
    }
  }
}

// A dictionary whose keys come mostly from `keys` and whose values are of
// any kind, lists of mostly strings being likelier than the rest.
inline Value::Dictionary fuzzedDictionary(FuzzedDataProvider& in, const Words& keys,
                                          const Words& strings, int maxEntries) {
  Value::Dictionary entries;
  for (int n = in.ConsumeIntegralInRange<int>(0, maxEntries); n > 0 && in.remaining_bytes() > 0;
       --n) {
    std::string key = keys.pick(in);
    if (in.ConsumeIntegralInRange<int>(0, 3) == 0) {
      Value::Array items;
      for (int m = in.ConsumeIntegralInRange<int>(0, 5); m > 0; --m) {
        items.push_back(in.ConsumeBool() ? Value::string(strings.pick(in))
                                         : fuzzedValue(in, strings, 1));
      }
      entries[key] = Value::array(std::move(items));
    } else {
      entries[key] = fuzzedValue(in, strings);
    }
  }
  return entries;
}

}  // namespace kv::fuzz
