// kavelin-host: one process of the simulated device, started by kavelin-sim.
#include "sim/host/host_start.h"

int main(int argc, char** argv) {
  return kv::sim::host::runHost(argc, argv);
}
