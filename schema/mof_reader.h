// Reads classes from MOF, the text form in which CIM class models are written.
//
// What is understood: qualifier declarations, class declarations with qualifiers, scalar and array
// properties with scalar defaults, references, methods with parameters, comments, and `#pragma
// include`. Other pragmas are passed over. Instances, aliases and array defaults are refused.
//
//     tvrmof::Schema schema = tvrmof::read_file("mof/tavrin_fc_schema.mof");
//     const tvrmof::Class* port = schema.find("TVRHBA_FCPort");
//     for (const tvrmof::Feature* feature : port->features) ...
//
// Errors: one `tvrmof::Error` with a line such as
//     "tavrin_fc.mof:12: class TVRHBA_X: parent CIM_Y is not declared".
// A schema that was returned is consistent: parents and targets exist, there is no cycle,
// redeclared features agree with their parent's, defaults fit their types; each qualifier is
// declared before its first use, has a value of its type, stands where its scope lets it, and
// contradicts no inherited one that mustn't be overridden.
//
// Names are compared without regard to the case of ASCII letters throughout.
// A `Schema` is constant once made and may be read by any thread; it can be moved, and pointers
// into it stay valid as long as it lives.
#ifndef TVR_SCHEMA_MOF_READER_H
#define TVR_SCHEMA_MOF_READER_H

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tvrmof {

class Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Where a declaration begins.
struct Position {
    std::string file; // as it was opened
    unsigned line = 0;
};

// Numbered as the runtime's type codes.
enum class Type : std::uint8_t {
    boolean,
    uint8,
    sint8,
    uint16,
    sint16,
    uint32,
    sint32,
    uint64,
    sint64,
    real32,
    real64,
    char16,
    string,
    datetime,
};
constexpr unsigned type_count = 14;

// "uint16" and the like.
const char* type_name(Type type) noexcept;
std::optional<Type> find_type(std::string_view name) noexcept;

// A default: false or true, a number, or the text of a string, datetime or char16.
using Literal = std::variant<bool, std::int64_t, std::uint64_t, double, std::string>;

// `value` is what stands in the parentheses, as the class name of EmbeddedInstance; a boolean one
// without parentheses is true. None for NULL and for arrays, which are read and not kept.
struct Qualifier {
    Position position;
    std::string name;
    std::optional<Literal> value;
};

class Qualifiers {
public:
    // The qualifier of that name, or null. `Key(false)` is found here all the same.
    const Qualifier* find(std::string_view name) const noexcept;
    // True if the qualifier stands there and is not false.
    bool has(std::string_view name) const noexcept;
    // Text of a qualifier such as EmbeddedInstance, or empty.
    std::string_view text(std::string_view name) const noexcept;

    std::vector<Qualifier> list; // in order of declaration
};

// What a property, a reference and a parameter have in common.
struct Typed {
    Position position;
    std::string name;
    Qualifiers qualifiers;
    Type type = Type::string; // counts unless `is_reference`
    bool is_reference = false;
    bool is_array = false;
    std::string target; // class that a reference, or an embedded instance, is of; else empty

    // A text that carries an instance of class `target`, or of any class.
    bool is_embedded_instance() const noexcept { return !is_reference && !target.empty(); }
    bool is_embedded_object() const noexcept { return qualifiers.has("EmbeddedObject"); }
};

struct Parameter : Typed {
    bool in() const noexcept; // unless In(false) stands there
    bool out() const noexcept { return qualifiers.has("Out"); }
};

enum class Feature_Kind { property, reference, method };

// A property, reference or method of a class. For a method, `type` is that of its result.
struct Feature : Typed {
    Feature_Kind kind = Feature_Kind::property;
    std::string origin;                  // the class whose declaration this is
    std::optional<Literal> value;        // default of a property
    bool value_is_null = false;          // the default is written, and NULL
    std::vector<Parameter> parameters;   // of a method, in order
    const Feature* overridden = nullptr; // the parent's feature that this one redeclares

    // A feature is a key if it or the feature that it redeclares is marked so.
    bool is_key() const noexcept;
    // The parameter of that name, or null.
    const Parameter* parameter(std::string_view name) const noexcept;
};

// What a class is, by its own mark or its parent's.
enum class Role { plain, association, indication };

struct Class {
    Position position;
    std::string name;
    Qualifiers qualifiers;
    const Class* super = nullptr; // null at the root of a hierarchy
    Role role = Role::plain;

    // All features: the parent's first, a redeclared one in its parent's place, additions last.
    std::vector<const Feature*> features;
    // Those declared in this class, in order.
    std::vector<std::unique_ptr<Feature>> own;

    bool is_abstract() const noexcept { return qualifiers.has("Abstract"); }
    bool is_association() const noexcept { return role == Role::association; }
    bool is_indication() const noexcept { return role == Role::indication; }

    // True if `feature` of `features` is declared in this class itself.
    bool is_local(const Feature& feature) const noexcept;

    // Null if there is none of that name and kind.
    const Feature* find(std::string_view feature) const noexcept;
    const Feature* find(std::string_view feature, Feature_Kind kind) const noexcept;
    std::vector<const Feature*> keys() const;    // in feature order
    std::vector<const Feature*> methods() const; // in feature order

    // True if this class is `ancestor` or below it.
    bool is_a(const Class& ancestor) const noexcept;
};

class Schema {
public:
    // In order of declaration.
    const std::vector<std::unique_ptr<Class>>& classes() const noexcept { return _classes; }
    // The class of that name, or null.
    const Class* find(std::string_view name) const noexcept;
    // True if both are declared and `descendant` is `ancestor` or below it.
    bool is_a(std::string_view descendant, std::string_view ancestor) const noexcept;

private:
    friend class Linker;
    struct Less {
        using is_transparent = void;
        bool operator()(std::string_view a, std::string_view b) const noexcept;
    };
    std::vector<std::unique_ptr<Class>> _classes;
    std::map<std::string, Class*, Less> _by_name;
};

// Compares names without regard to the case of ASCII letters.
bool same_name(std::string_view a, std::string_view b) noexcept;

// Reads a file and what it includes, or several files as one schema. Throws `Error`.
Schema read_file(const std::string& path);
Schema read_files(const std::vector<std::string>& paths);

// Reads a text; `name` stands for the file in positions. Included files are sought from the working
// directory. Throws `Error`.
Schema read_text(std::string_view text, const std::string& name = "text");

} // namespace tvrmof

#endif
