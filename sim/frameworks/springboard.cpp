// Placeholder until this module lands.
namespace kv::sim::frameworks {
void defineSpringBoard() {}
void startSpringBoard() {}
}  // namespace kv::sim::frameworks
