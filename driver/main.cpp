#include "platform/cpu.h"
#include "driver/loop.h"

int main() {
    require_cpu_features();
    startup();
    command_loop();
}
