// Apple's mach types the I/O registry functions take.
#pragma once

typedef unsigned int mach_port_t;
typedef int kern_return_t;
