// Placeholder until this module lands.
namespace kv::sim::frameworks {
void defineAlertViews() {}
}  // namespace kv::sim::frameworks
