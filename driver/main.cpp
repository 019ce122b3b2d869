#include "driver/loop.h"

int main() {
    startup();
    command_loop();
}
