// Where entry points are found, in processes of their own with real libraries.

#include "tests/access/run_process.h"
#include "tests/common/session.h"
#include "tests/common/temp_dir.h"

#include <map>
#include <optional>

namespace cimple {
namespace {

// A file that is empty can't be opened, even if the machine has a real library of its name. One
// whose fixture is marked with '+' is empty until the probe is told its name.
void install(const TempDir& dir, std::string file, std::string fixture) {
    if (fixture.empty() || fixture[0] == '+') {
        dir.write(file, "");
        file += ".later";
    }
    fixture.erase(0, fixture.starts_with("+") ? 1 : 0);
    std::filesystem::create_symlink(FIXTURES "/libfixture_" + fixture + ".so", dir.file(file));
}

class Binding : public testing::Test {
protected:
    Binding() {
        // As libHBAAPI.so=hba librmapi.so=+rm: the files in an empty directory.
        session.on("libraries", [this](const auto& words) {
            _dir.emplace();
            std::map<std::string, std::string> fixtures;
            for (const std::string& word : words) {
                fixtures[word.substr(0, word.find('='))] = word.substr(word.find('=') + 1);
            }
            for (const char* file : {"libHBAAPI.so", "liblrmapi.so", "librmapi.so"}) {
                install(*_dir, file, fixtures[file]);
            }
        });
        session.on("probe", [this] {
            return runProcess("cd " + _dir->path() + " && LD_LIBRARY_PATH=. " PROBE " " +
                              session.rest());
        });
    }

    Text_Session session;

private:
    std::optional<TempDir> _dir;
};

TVR_SESSIONS(Binding, "binding.txt");

} // namespace
} // namespace cimple
