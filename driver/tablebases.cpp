#include "driver/tablebases.h"

#include <cctype>
#include <cstdio>
#include <cstring>
#include <string>

#include "board/syzygy.h"
#include "driver/engine_state.h"
#include "platform/platform.h"

namespace {

// The folders last loaded and what they gave: the same text again (mo.ini at every "new") reports
// without mapping every file afresh. (An empty string is constant-initialised where the standard
// library allows it; clang's fuzz build with this library does not, so it is not demanded.)
std::string loaded_folders;
constinit TbLoadReport loaded_report{0, 0, 0, {}};

void say(const std::string& text) {
    if (protocol.uci_mode.load(std::memory_order_relaxed))
        std::printf("info string %s\n", text.c_str());
    else
        std::printf("# %s\n", text.c_str());
}

// The word at the start of text, in any case, followed by a blank or the end: the text after it.
const char* after_word(const char* text, const char* word) {
    while (*text == ' ' || *text == '\t')
        ++text;
    const size_t n = std::strlen(word);
    for (size_t i = 0; i < n; ++i)
        if (std::tolower(static_cast<unsigned char>(text[i])) != word[i]) return nullptr;
    if (text[n] != '\0' && text[n] != ' ' && text[n] != '\t') return nullptr;
    text += n;
    while (*text == ' ' || *text == '\t')
        ++text;
    return text;
}

} // namespace

void set_tablebase_path(const char* folders) {
    std::string text(folders);
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())))
        text.pop_back();
    if (text == "<empty>") text.clear();
    if (text != loaded_folders || text.empty()) {
        loaded_report  = tb_load(text, FOLDER_LIST_SEPARATOR);
        loaded_folders = text;
    }
    for (const std::string& problem : loaded_report.problems)
        say(problem);
    if (text.empty()) {
        say("endgame tables off");
    } else if (loaded_report.wdl_tables + loaded_report.dtz_tables == 0) {
        say("found no endgame tables");
    } else {
        say("found " + std::to_string(loaded_report.wdl_tables) + " WDL and " +
            std::to_string(loaded_report.dtz_tables) + " DTZ tables of up to " +
            std::to_string(loaded_report.max_men) + " men");
    }
}

bool tablebase_command(const char* line) {
    const char* rest = after_word(line, "syzygypath");
    if (!rest) {
        rest = after_word(line, "egtpath");
        if (!rest) return false;
        rest = after_word(rest, "syzygy");
        // Tables of other kinds are not ours: XBoard only sends the kinds we named.
        if (!rest) {
            std::puts("usage: egtpath syzygy <folders>");
            return true;
        }
    }
    if (*rest == '\0') {
        std::puts(after_word(line, "syzygypath") ? "usage: syzygypath <folders>"
                                                 : "usage: egtpath syzygy <folders>");
        return true;
    }
    set_tablebase_path(rest);
    return true;
}
