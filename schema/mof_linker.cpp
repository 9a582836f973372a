#include "schema/mof_parser.h"

#include <utility>

namespace tvrmof {

// Resolves the names of one schema, class by class in order of declaration, and checks that what
// they say fits together.
class Linker {
public:
    explicit Linker(Declarations declarations) : _declarations(std::move(declarations)) {}

    Schema link() {
        for (Class_Declaration& declaration : _declarations.classes) {
            flatten(declaration);
        }
        for (const std::unique_ptr<Class>& declared : _schema._classes) {
            check(*declared);
        }
        return std::move(_schema);
    }

private:
    [[noreturn]] static void fail_class(const Class& declared, const std::string& message) {
        fail(declared.position, "class " + declared.name + ": " + message);
    }
    [[noreturn]] static void fail_feature(const Class& declared, const Feature& feature,
                                          const std::string& message) {
        fail(feature.position, "class " + declared.name + ": " + feature.name + ": " + message);
    }

    void flatten(Class_Declaration& declaration) {
        Class& declared = *declaration.declared;
        if (const Class* other = _schema.find(declared.name)) {
            fail_class(declared, "already declared at " + other->position.file + ":" +
                                     std::to_string(other->position.line));
        }
        if (!declaration.super.empty()) {
            declared.super = _schema.find(declaration.super);
            if (declared.super == nullptr) {
                fail_class(declared, "parent " + declaration.super + " is not declared before it");
            }
            declared.features = declared.super->features;
        }
        set_role(declared);
        for (const std::unique_ptr<Feature>& feature : declared.own) {
            place(declared, *feature);
        }
        _schema._by_name.emplace(declared.name, &declared);
        _schema._classes.push_back(std::move(declaration.declared));
    }

    static void set_role(Class& declared) {
        const bool association = declared.qualifiers.has("Association");
        const bool indication = declared.qualifiers.has("Indication");
        if (association && indication) {
            fail_class(declared, "cannot be an association and an indication");
        }
        const Role own = association  ? Role::association
                         : indication ? Role::indication
                                      : Role::plain;
        declared.role = own;
        if (declared.super != nullptr) {
            declared.role = declared.super->role;
            if (own != Role::plain && own != declared.role) {
                fail_class(declared, "is marked otherwise than its parent " + declared.super->name);
            }
        }
    }

    static void place(Class& declared, Feature& feature) {
        for (const Feature*& inherited : declared.features) {
            if (same_name(inherited->name, feature.name)) {
                check_redeclaration(declared, feature, *inherited);
                feature.overridden = inherited;
                inherited = &feature;
                return;
            }
        }
        declared.features.push_back(&feature);
    }

    static void check_redeclaration(const Class& declared, const Feature& feature,
                                    const Feature& inherited) {
        if (feature.kind != inherited.kind || feature.is_array != inherited.is_array ||
            feature.is_embedded_instance() != inherited.is_embedded_instance() ||
            feature.is_embedded_object() != inherited.is_embedded_object() ||
            (!feature.is_reference && feature.type != inherited.type)) {
            fail_feature(declared, feature,
                         "differs in type from its declaration in " + inherited.origin);
        }
    }

    const Class& target(const Class& declared, const Feature& feature, const Typed& typed) const {
        const Class* found = _schema.find(typed.target);
        if (found == nullptr) {
            const std::string where = &typed == &feature ? "" : "parameter " + typed.name + ": ";
            fail(typed.position, "class " + declared.name + ": " + feature.name + ": " + where +
                                     "class " + typed.target + " is not declared");
        }
        return *found;
    }

    static Scope scope_of(const Class& declared) noexcept {
        return declared.is_association()  ? scope_association
               : declared.is_indication() ? scope_indication
                                          : scope_class;
    }
    static Scope scope_of(const Feature& feature) noexcept {
        return feature.kind == Feature_Kind::method      ? scope_method
               : feature.kind == Feature_Kind::reference ? scope_reference
                                                         : scope_property;
    }

    // The qualifier of that name that a class or feature inherits from `above`, its parent or the
    // feature that it redeclares, or null.
    static const Qualifier* inherited(const Class* above, std::string_view name) noexcept {
        const Qualifier* found = nullptr;
        for (; above != nullptr && found == nullptr; above = above->super) {
            found = above->qualifiers.find(name);
        }
        return found;
    }
    static const Qualifier* inherited(const Feature* above, std::string_view name) noexcept {
        const Qualifier* found = nullptr;
        for (; above != nullptr && found == nullptr; above = above->overridden) {
            found = above->qualifiers.find(name);
        }
        return found;
    }

    template <class Above>
    void check(const Qualifiers& qualifiers, Scope scope, const Above* above,
               const std::string& where) const {
        for (const Qualifier& qualifier : qualifiers.list) {
            const Qualifier_Declaration& rule = *_declarations.find_qualifier(qualifier.name);
            if ((rule.scopes & scope) == 0) {
                fail(qualifier.position,
                     where + ": the qualifier " + rule.name + " cannot stand here");
            }
            if (!rule.is_inherited || rule.may_be_overridden) {
                continue;
            }
            const Qualifier* const first = inherited(above, rule.name);
            if (first != nullptr && first->value != qualifier.value) {
                fail(qualifier.position,
                     where + ": the qualifier " + rule.name + " cannot differ from its value at " +
                         first->position.file + ":" + std::to_string(first->position.line));
            }
        }
    }

    void check(const Class& declared) const {
        unsigned references = 0;
        check(declared.qualifiers, scope_of(declared), declared.super, "class " + declared.name);
        for (const std::unique_ptr<Feature>& feature : declared.own) {
            check(declared, *feature);
        }
        for (const Feature* feature : declared.features) {
            references += feature->kind == Feature_Kind::reference;
        }
        if (declared.is_association() && references < 2) {
            fail_class(declared, "an association needs two references");
        }
        if (!declared.is_association() && references != 0) {
            fail_class(declared, "only an association can have references");
        }
    }

    void check(const Class& declared, const Feature& feature) const {
        if (!feature.target.empty()) {
            const Class& end = target(declared, feature, feature);
            if (feature.overridden != nullptr) {
                const Class* above = _schema.find(feature.overridden->target);
                if (above != nullptr && !end.is_a(*above)) {
                    fail_feature(declared, feature,
                                 end.name + " is not below " + above->name + ", the target in " +
                                     feature.overridden->origin);
                }
            }
        }
        const std::string where = "class " + declared.name + ": " + feature.name;
        check(feature.qualifiers, scope_of(feature), feature.overridden, where);
        if (feature.is_key() && (feature.is_array || feature.kind == Feature_Kind::method)) {
            fail_feature(declared, feature, "an array or a method cannot be a key");
        }
        for (const Parameter& parameter : feature.parameters) {
            check<Feature>(parameter.qualifiers, scope_parameter, nullptr,
                           where + ": parameter " + parameter.name);
            if (!parameter.target.empty()) {
                target(declared, feature, parameter);
            }
        }
    }

    Declarations _declarations;
    Schema _schema;
};

Schema link(Declarations declarations) {
    return Linker(std::move(declarations)).link();
}

} // namespace tvrmof
