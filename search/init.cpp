#include "search/init.h"

#include "board/attacks.h"

// Every other table of board/, eval/ and search/ is computed at compile time.
void tables_init() {
    attack_init();
}
