// The signature check: the library's rows and the simulator's methods
// against iOS's own declarations.
#include "sim/device/signatures.h"

#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <vector>

#include "platform/encoding.h"
#include "sim/device/device.h"

namespace kv::sim {

namespace {

// One declaration: a method as the headers of some major versions give it.
struct Declaration {
  std::string className;
  std::string method;  // "-sel" or "+sel"
  std::set<int> versions;
  std::vector<std::string> encodings;  // the candidates (an uncertain 32-bit type gives two)
  int line = 0;
};

std::vector<std::string> split(const std::string& s, char sep) {
  std::vector<std::string> out;
  std::string item;
  std::stringstream in(s);
  while (std::getline(in, item, sep)) out.push_back(item);
  if (!s.empty() && s.back() == sep) out.emplace_back();
  return out;
}

// The encodings a declared type may have on a 64-bit device, as this
// runtime writes them (BOOL is one byte here as there). A type read from a
// 32-bit dump cannot tell int from NSInteger, nor float from CGFloat.
std::vector<std::string> encodingsOf(const std::string& declared) {
  static const std::map<std::string, std::string> kTypes = {
      {"void", "v"},
      {"id", "@"},
      {"id (block)", "@?"},
      {"BOOL", "c"},
      {"int", "i"},
      {"unsigned int", "I"},
      {"long long", "q"},
      {"unsigned long long", "Q"},
      {"double", "d"},
      {"float", "f"},
      {"void *", "^v"},
      {"const void *", "r^v"},
      {"const char *", "r*"},
      {"SEL", ":"},
      {"Class", "#"},
      {"unsigned int *", "^I"},
      {"IOHIDEventRef", "^{__IOHIDEvent=}"},
      {"struct CGRect", "{CGRect={CGPoint=dd}{CGSize=dd}}"},
      {"struct CGSize", "{CGSize=dd}"},
      {"struct CGAffineTransform", "{CGAffineTransform=dddddd}"},
  };
  const std::string kUncertain = " [32-bit dump]";
  if (declared.size() > kUncertain.size() &&
      declared.compare(declared.size() - kUncertain.size(), kUncertain.size(), kUncertain) == 0) {
    std::string type = declared.substr(0, declared.size() - kUncertain.size());
    if (type == "int") return {"i", "q"};
    if (type == "unsigned int") return {"I", "Q"};
    if (type == "float") return {"f", "d"};
    return encodingsOf(type);
  }
  auto it = kTypes.find(declared);
  return it == kTypes.end() ? std::vector<std::string>{} : std::vector<std::string>{it->second};
}

// The method encodings a declaration allows; none when a type is unknown.
std::vector<std::string> methodEncodings(const std::string& ret, const std::string& args) {
  std::vector<std::string> out = encodingsOf(ret);
  for (auto& e : out) e += "@:";
  if (!args.empty()) {
    for (const auto& arg : split(args, ';')) {
      std::vector<std::string> next;
      for (const auto& choice : encodingsOf(arg)) {
        for (const auto& prefix : out) next.push_back(prefix + choice);
      }
      out = std::move(next);
    }
  }
  return out;
}

bool compatible(const std::string& actual, const std::vector<std::string>& allowed) {
  for (const auto& e : allowed) {
    if (platform::encodingsCompatible(actual, e)) return true;
  }
  return false;
}

std::string describeVersions(const std::set<int>& versions) {
  std::string out;
  for (int v : versions) out += (out.empty() ? "" : ",") + std::to_string(v);
  return out;
}

struct Table {
  std::vector<Declaration> declared;
  std::vector<std::string> unknown;  // "CLASS -sel": no header declares it
};

bool readTable(const std::string& path, Table* table, std::string* error) {
  std::ifstream in(path);
  if (!in) {
    *error = "cannot read " + path;
    return false;
  }
  std::string line;
  int number = 0;
  while (std::getline(in, line)) {
    ++number;
    if (number == 1 || line.empty()) continue;  // the column names
    auto f = split(line, '\t');
    if (f.size() < 5) {
      *error = path + ":" + std::to_string(number) + ": expected six columns";
      return false;
    }
    std::string name = f[0] + " " + f[1];
    if (f[3] == "unknown") {
      table->unknown.push_back(name);
      continue;
    }
    Declaration d{f[0], f[1], {}, methodEncodings(f[3], f[4]), number};
    for (const auto& v : split(f[2], ',')) {
      if (!v.empty()) d.versions.insert(std::stoi(v));
    }
    if (d.encodings.empty()) {
      *error = path + ":" + std::to_string(number) + ": a type this check does not know";
      return false;
    }
    table->declared.push_back(std::move(d));
  }
  return true;
}

// The profiles checked, one a major version.
constexpr const char* kVersions[][2] = {{"8", "8.4"}, {"9", "9.3"}, {"10", "10.3"}, {"11", "11.1"}};
constexpr const char* kProcesses[] = {"SpringBoard", "Preferences", "Camera", "InCallService"};

}  // namespace

int checkSignatures(const std::string& tablePath, const RunOptions& options) {
  Table table;
  std::string error;
  if (!readTable(tablePath, &table, &error)) {
    std::fprintf(stderr, "kavelin-sim signatures: %s\n", error.c_str());
    return 2;
  }
  std::vector<std::string> methods;
  for (const auto& d : table.declared) methods.push_back(d.className + " " + d.method);

  // What the library's replacements stand for, and what each version's
  // simulated processes define.
  // The library's rows: their encoding and the first version they install on.
  std::multimap<std::string, std::pair<std::string, int>> rows;
  std::map<int, std::map<std::string, std::string>> simulated;
  for (const auto& [major, version] : kVersions) {
    for (const char* process : kProcesses) {
      DeviceOptions o;
      o.version = version;
      o.hostPath = options.hostPath;
      o.libraryPath = options.libraryPath;
      o.hostTimeoutMs = options.hostTimeoutMs;
      Device device(o);
      if (!device.start(process, &error)) {
        std::fprintf(stderr, "kavelin-sim signatures: %s on iOS %s: %s\n", process, version,
                     error.c_str());
        return 2;
      }
      auto found = device.query(process, "encodings", methods, &error);
      for (const auto& [method, encoding] : found ? found->asDictionary() : Value::Dictionary{}) {
        simulated[std::stoi(major)].emplace(method, encoding.asString());
      }
      if (rows.empty()) {
        auto text = device.query(process, "row-encodings", {}, &error);
        std::stringstream in(text ? text->asString() : "");
        std::string cls, sel, encoding;
        int first = 0;
        while (in >> cls >> sel >> encoding >> first) {
          rows.emplace(cls + " " + sel, std::make_pair(encoding, first));
        }
      }
    }
  }

  int differences = 0;
  int checked = 0;
  for (const auto& d : table.declared) {
    std::string name = d.className + " " + d.method;
    // A device refuses a row whose type differs: some row for the method must
    // agree with each declaration (version-specific rows may differ).
    // Only the versions where a row is installed at all count.
    auto [first, last] = rows.equal_range(name);
    bool applies = false;
    for (auto it = first; it != last; ++it) {
      applies |= !d.versions.empty() && *d.versions.rbegin() >= it->second.second;
    }
    if (applies) {
      ++checked;
      bool any = false;
      std::string seen;
      for (auto it = first; it != last; ++it) {
        if (d.versions.empty() || *d.versions.rbegin() < it->second.second) continue;
        any |= compatible(it->second.first, d.encodings);
        seen += (seen.empty() ? "" : " or ") + it->second.first;
      }
      if (!any) {
        ++differences;
        std::fprintf(options.out, "library   %s: replacement is %s, iOS %s declares %s (line %d)\n",
                     name.c_str(), seen.c_str(), describeVersions(d.versions).c_str(),
                     d.encodings.front().c_str(), d.line);
      }
    }
    for (int v : d.versions) {
      auto it = simulated[v].find(name);
      if (it == simulated[v].end()) continue;
      ++checked;
      if (compatible(it->second, d.encodings)) continue;
      ++differences;
      std::fprintf(options.out,
                   "simulator %s on iOS %d: defined as %s, iOS declares %s (line %d)\n",
                   name.c_str(), v, it->second.c_str(), d.encodings.front().c_str(), d.line);
    }
  }
  std::fprintf(options.out,
               "signatures: %d checks, %d differences; %zu methods no header declares, kept as "
               "they are:\n",
               checked, differences, table.unknown.size());
  for (const auto& u : table.unknown) std::fprintf(options.out, "  unknown %s\n", u.c_str());
  return differences == 0 ? 0 : 1;
}

}  // namespace kv::sim
