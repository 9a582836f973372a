#include "host/tvrcim/line_editor.h"

#include <fcntl.h>
#include <histedit.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace fs = std::filesystem;

namespace tvrcim {

namespace {

constexpr int history_size = 500;

// Nothing where the user has no place for it. It is readable for the user alone: commands name what
// the host has.
fs::path history_file() {
    const char* const state = secure_getenv("XDG_STATE_HOME");
    const char* const home = secure_getenv("HOME");
    fs::path directory;
    if (state != nullptr && *state == '/') {
        directory = state;
    } else if (home != nullptr && *home == '/') {
        directory = fs::path(home) / ".local" / "state";
    } else {
        return {};
    }
    directory /= "tvrcim";
    std::error_code error;
    fs::create_directories(directory, error);
    fs::path file = directory / "history";
    const int descriptor = open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (descriptor < 0) {
        return {};
    }
    close(descriptor);
    return file;
}

std::string common_beginning(const std::vector<std::string>& words) {
    std::string common = words.front();
    for (const std::string& word : words) {
        const auto end =
            std::mismatch(common.begin(), common.end(), word.begin(), word.end()).first;
        common.erase(end, common.end());
    }
    return common;
}

char* prompt(EditLine*) {
    static char text[] = "tvrcim> ";
    return text;
}

} // namespace

struct Line_Editor::Rep {
    Complete complete;
    EditLine* editor = nullptr;
    History* history = nullptr;
    fs::path file;

    static Rep& of(EditLine* editor) {
        void* rep = nullptr;
        el_get(editor, EL_CLIENTDATA, &rep);
        return *static_cast<Rep*>(rep);
    }

    // Puts `word` in place of the last one before the cursor.
    void replace(std::size_t old_size, const std::string& word) const {
        el_deletestr(editor, static_cast<int>(old_size));
        el_insertstr(editor, word.c_str());
    }

    unsigned char complete_word() const {
        const LineInfo* const info = el_line(editor);
        const std::string line(info->buffer, info->cursor);
        const std::vector<std::string> words = complete(line);
        if (words.empty()) {
            return CC_ERROR;
        }
        const std::size_t typed = line.size() - (line.find_last_of(" \t") + 1);
        const std::string common = common_beginning(words);
        if (words.size() == 1) {
            const bool goes_on = common.ends_with('.') || common.ends_with('=');
            replace(typed, common + (goes_on ? "" : " "));
            return CC_REFRESH;
        }
        if (common.size() > typed) {
            replace(typed, common);
            return CC_REFRESH;
        }
        std::putchar('\n');
        for (const std::string& word : words) {
            std::printf("%s\n", word.c_str());
        }
        std::fflush(stdout);
        return CC_REDISPLAY;
    }

    unsigned char drop_line() const {
        const LineInfo* const info = el_line(editor);
        const auto size = static_cast<int>(info->lastchar - info->buffer);
        el_cursor(editor, static_cast<int>(info->lastchar - info->cursor));
        el_deletestr(editor, size);
        std::fputs("^C\n", stdout);
        std::fflush(stdout);
        return CC_REDISPLAY;
    }
};

Line_Editor::Line_Editor(Complete complete) : _rep(std::make_unique<Rep>()) {
    std::setlocale(LC_CTYPE, "");
    Rep& rep = *_rep;
    rep.complete = std::move(complete);
    rep.editor = el_init("tvrcim", stdin, stdout, stderr);
    rep.history = history_init();
    HistEvent event;
    history(rep.history, &event, H_SETSIZE, history_size);
    history(rep.history, &event, H_SETUNIQUE, 1);
    rep.file = history_file();
    if (!rep.file.empty()) {
        history(rep.history, &event, H_LOAD, rep.file.c_str());
    }
    el_set(rep.editor, EL_CLIENTDATA, &rep);
    el_set(rep.editor, EL_EDITOR, "emacs");
    el_set(rep.editor, EL_HIST, history, rep.history);
    el_set(rep.editor, EL_PROMPT, prompt);
    el_set(rep.editor, EL_SIGNAL, 1);
    el_set(
        rep.editor, EL_ADDFN, "complete-word", "Complete the word",
        +[](EditLine* editor, int) { return Rep::of(editor).complete_word(); });
    el_set(
        rep.editor, EL_ADDFN, "drop-line", "Drop the line",
        +[](EditLine* editor, int) { return Rep::of(editor).drop_line(); });
    el_source(rep.editor, nullptr);
    // While a line is edited Ctrl-C is a key as others are, and so is Ctrl-Z.
    el_set(rep.editor, EL_SETTY, "-d", "-isig", nullptr);
    el_set(rep.editor, EL_BIND, "^I", "complete-word", nullptr);
    el_set(rep.editor, EL_BIND, "^C", "drop-line", nullptr);
}

Line_Editor::~Line_Editor() {
    history_end(_rep->history);
    el_end(_rep->editor);
}

std::optional<std::string> Line_Editor::read() {
    int size = 0;
    const char* const text = el_gets(_rep->editor, &size);
    if (text == nullptr || size <= 0) {
        return std::nullopt;
    }
    std::string line(text, static_cast<std::size_t>(size));
    line.erase(std::min(line.find_last_not_of("\r\n") + 1, line.size()));
    if (line.find_first_not_of(" \t") != std::string::npos) {
        HistEvent event;
        history(_rep->history, &event, H_ENTER, line.c_str());
        if (!_rep->file.empty()) {
            history(_rep->history, &event, H_SAVE, _rep->file.c_str());
        }
    }
    return line;
}

} // namespace tvrcim
