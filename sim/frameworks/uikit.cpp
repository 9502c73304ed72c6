// Placeholder until this module lands.
namespace kv::sim::frameworks {
void defineUIKit() {}
}  // namespace kv::sim::frameworks
