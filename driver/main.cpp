#include "driver/loop.h"
#include "platform/cpu.h"

int main() {
    require_cpu_features();
    startup();
    command_loop();
}
