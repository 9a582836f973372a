// One object manager with the way commands talk to people: names checked, paths completed, errors
// in one line.
#ifndef TVR_HOST_TVRCIM_SESSION_H
#define TVR_HOST_TVRCIM_SESSION_H

#include "host/object_manager.h"
#include "host/tvrcim/errors.h"

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace tvrcim {

enum class Format { text, json };

class Session {
public:
    // `name_space` is empty where none was asked for: each class then has its usual one.
    Session(tvrhost::Object_Manager& manager, Format format, std::string name_space,
            std::ostream& out);

    tvrhost::Object_Manager& manager;
    Format format;
    std::ostream& out;
    // The characters of a line of the output; 0 where lines may have any length.
    std::function<std::size_t()> width = [] { return std::size_t{0}; };
    // For those who found nothing: throws Cim_Error where the reason is known.
    std::function<void()> explain_nothing = [] {};
    // The status of the command, which it may change where it says itself what went wrong.
    Exit_Status status = success;

    // The class of that name. Throws Usage_Error that suggests near names.
    const tvrmof::Class& find_class(const std::string& name) const;
    // Throws Usage_Error for a name that the class has not.
    const tvrmof::Feature& find_feature(const tvrmof::Class& model, const std::string& name,
                                        tvrmof::Feature_Kind kind) const;
    // The namespace asked for, or the class's usual one.
    std::string name_space_of(const tvrmof::Class& model) const;
    // True if the module serves the class or a class below it.
    bool is_served(const tvrmof::Class& model) const;

    // Throws Cim_Error unless the answer is good; `what` was to be done.
    static void check(const tvrhost::Answer& answer, const std::string& what);

    // The whole path of an instance that `text` names: the only one whose keys fit. A text key fits
    // by its beginning if none is equal, and a WWN in any spelling. Of a class that nobody serves,
    // as the computer system's may be, the instances are those that associations lead to. All keys
    // of a served class stand for themselves where nothing fits.
    tvrhost::Cim_Path find_path(const std::string& text);

    // Throws Cim_Error if somebody serves the path's class and has no such instance; for those who
    // found nothing from there on.
    void check_exists(const tvrhost::Cim_Path& path);

    // The instance of the class, or of one below it, that has the name as a text key, as
    // `find_path` compares it. Keys that name the system or the class don't count.
    tvrhost::Cim_Path find_named(const std::string& name, const tvrmof::Class& model);

    // The class by which a name finds what a reference shall lead to.
    const tvrmof::Class* class_meant(const tvrmof::Typed& reference) const;

    // A text as a value of what is declared. A path in it is completed if it lacks keys; for a
    // reference a name does as well. "@FILE" is the content of a file for an array of bytes.
    tvrhost::Cim_Value read_value(const std::string& text, const tvrmof::Typed& declared,
                                  const std::string& name_space);

private:
    // `is_whole` tells if the path has all keys.
    tvrhost::Cim_Path read_path(const std::string& text, bool& is_whole) const;
    std::vector<tvrhost::Cim_Path> ends_of(const tvrmof::Class& model) const;
    tvrhost::Answer names_of(const tvrmof::Class& model, const std::string& name_space,
                             const std::string& text);
    tvrhost::Cim_Path the_only(const std::vector<tvrhost::Cim_Path>& found,
                               const std::vector<tvrhost::Cim_Path>& among,
                               const tvrmof::Class& model, const std::string& text);

    std::string _name_space;
};

// Names an instance whatever the namespace: ends of associations may lack the one that the instance
// has where it is served.
std::string identity(tvrhost::Cim_Path path);

// True of a key that tells the system or the class of an instance, and not which one it is.
bool names_system_or_class(const std::string& key);

// "NAME=VALUE" in its parts. Throws Usage_Error.
std::pair<std::string, std::string> split_assignment(const std::string& text);

} // namespace tvrcim

#endif
