// Placeholder until this module lands.
namespace kv::sim::frameworks {
void definePasscodeField() {}
}  // namespace kv::sim::frameworks
