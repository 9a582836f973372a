#include "schema/mof_parser.h"

#include <utility>

namespace tvrmof {

// Resolves the names of one schema, class by class in order of declaration, and checks that what
// they say fits together.
class Linker {
public:
    Schema link(Declarations declarations) {
        for (Declaration& declaration : declarations) {
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

    void flatten(Declaration& declaration) {
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

    void check(const Class& declared) const {
        unsigned references = 0;
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
        if (feature.is_key() && (feature.is_array || feature.kind == Feature_Kind::method)) {
            fail_feature(declared, feature, "an array or a method cannot be a key");
        }
        for (const Parameter& parameter : feature.parameters) {
            if (!parameter.target.empty()) {
                target(declared, feature, parameter);
            }
        }
    }

    Schema _schema;
};

Schema link(Declarations declarations) {
    return Linker().link(std::move(declarations));
}

} // namespace tvrmof
