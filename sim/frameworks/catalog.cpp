// Placeholder until this module lands.
namespace kv::sim::frameworks {
void defineCatalog() {}
}  // namespace kv::sim::frameworks
