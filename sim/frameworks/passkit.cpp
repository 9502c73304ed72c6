// Placeholder until this module lands.
namespace kv::sim::frameworks {
void definePassKit() {}
}  // namespace kv::sim::frameworks
