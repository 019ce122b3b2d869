#include "platform/cpu.h"

#include <cstdio>
#include <cstdlib>

#ifdef MORVAINE_USES_POPCNT
#include <cpuid.h>

// CPUID leaf 1 reports POPCNT in bit 23 of ECX.
static bool cpu_has_popcnt() {
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (!__get_cpuid(1, &eax, &ebx, &ecx, &edx)) return false;
    return (ecx & bit_POPCNT) != 0;
}
#endif

void require_cpu_features() {
#ifdef MORVAINE_USES_POPCNT
    if (!cpu_has_popcnt()) {
        std::puts("This processor has no POPCNT instruction, which this build of Morvaine needs: "
                  "build it with -DMORVAINE_NATIVE=ON");
        std::exit(1);
    }
#endif
}
