// Sessions with the RM library: what a call comes to, what goes to the library as "> ", and the
// lines of the log as "| ".
#pragma once

#include "tests/access/fake_fixture.h"
#include "tests/common/session.h"

#include <map>

namespace cimple {

//   status ENTRY_POINT CODE...    what its next calls come to
//   number [N]                    the count or state that the library writes
//   calls ENTRY_POINT             how many there were, from here on counted again
class Access_Session : public WithFakeLibraries {
protected:
    void SetUp() override {
        WithFakeLibraries::SetUp();
        *libraries = {};
        session.on("status", [this](const auto& words) {
            auto& statuses = libraries->statuses[words.at(0)];
            statuses.clear();
            for (std::size_t i = 1; i < words.size(); ++i) {
                statuses.push_back(number(words[i]));
            }
        });
        session.on("number", [this](const auto& words) {
            libraries->number.reset();
            if (!words.empty()) {
                libraries->number = number(words[0]);
            }
        });
        session.on("calls", [this](const auto& words) {
            return std::exchange(libraries->calls[words.at(0)], 0);
        });
    }
    ~Access_Session() override {
        if (libraryHandles[LRMAPI_LIBRARY] != nullptr) { // which the records are part of
            *libraries = {};
        }
    }

    // A command of which also requests and log are told.
    void on_call(const std::string& name, const Text_Session::Command& call) {
        session.on(name, [this, call](const auto& words, std::ostream& answer) {
            log.take();
            libraries->requests.clear();
            call(words, answer);
            answer << '\n';
            const std::vector<std::string>& requests = libraries->requests;
            for (std::size_t i = 0, next = 0; i < requests.size(); i = next) {
                while (next < requests.size() && requests[next] == requests[i]) {
                    ++next;
                }
                answer << "> " << requests[i]
                       << (next - i == 1 ? "" : ", times " + std::to_string(next - i)) << '\n';
            }
            for (const std::string& line : log.take()) {
                tell(line, answer);
            }
        });
    }
    static void tell(const std::string& line, std::ostream& answer) {
        answer << "| ";
        for (const char c : line) {
            answer << (c == '\n' ? "\\n" : std::string(1, c));
        }
        answer << '\n';
    }
    static uint32 number(const std::string& word) {
        return static_cast<uint32>(std::stoul(word, nullptr, 0));
    }
    static uint32 number(const Text_Session::Words& words, std::size_t i) {
        return number(words.at(i));
    }

    Text_Session session;
};

} // namespace cimple
