#include "host/object_manager.h"

#include "host/declared_type.h"
#include "host/object_manager_rep.h"

#include <algorithm>
#include <iostream>

namespace tvrhost {

namespace {

struct Code_Name {
    int rc;
    const char* name;
};

constexpr Code_Name code_names[] = {
    {CMPI_RC_OK, "CMPI_RC_OK"},
    {CMPI_RC_ERR_FAILED, "CMPI_RC_ERR_FAILED"},
    {CMPI_RC_ERR_ACCESS_DENIED, "CMPI_RC_ERR_ACCESS_DENIED"},
    {CMPI_RC_ERR_INVALID_NAMESPACE, "CMPI_RC_ERR_INVALID_NAMESPACE"},
    {CMPI_RC_ERR_INVALID_PARAMETER, "CMPI_RC_ERR_INVALID_PARAMETER"},
    {CMPI_RC_ERR_INVALID_CLASS, "CMPI_RC_ERR_INVALID_CLASS"},
    {CMPI_RC_ERR_NOT_FOUND, "CMPI_RC_ERR_NOT_FOUND"},
    {CMPI_RC_ERR_NOT_SUPPORTED, "CMPI_RC_ERR_NOT_SUPPORTED"},
    {CMPI_RC_ERR_CLASS_HAS_CHILDREN, "CMPI_RC_ERR_CLASS_HAS_CHILDREN"},
    {CMPI_RC_ERR_CLASS_HAS_INSTANCES, "CMPI_RC_ERR_CLASS_HAS_INSTANCES"},
    {CMPI_RC_ERR_INVALID_SUPERCLASS, "CMPI_RC_ERR_INVALID_SUPERCLASS"},
    {CMPI_RC_ERR_ALREADY_EXISTS, "CMPI_RC_ERR_ALREADY_EXISTS"},
    {CMPI_RC_ERR_NO_SUCH_PROPERTY, "CMPI_RC_ERR_NO_SUCH_PROPERTY"},
    {CMPI_RC_ERR_TYPE_MISMATCH, "CMPI_RC_ERR_TYPE_MISMATCH"},
    {CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED, "CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED"},
    {CMPI_RC_ERR_INVALID_QUERY, "CMPI_RC_ERR_INVALID_QUERY"},
    {CMPI_RC_ERR_METHOD_NOT_AVAILABLE, "CMPI_RC_ERR_METHOD_NOT_AVAILABLE"},
    {CMPI_RC_ERR_METHOD_NOT_FOUND, "CMPI_RC_ERR_METHOD_NOT_FOUND"},
    {CMPI_RC_DO_NOT_UNLOAD, "CMPI_RC_DO_NOT_UNLOAD"},
    {CMPI_RC_NEVER_UNLOAD, "CMPI_RC_NEVER_UNLOAD"},
    {CMPI_RC_ERR_INVALID_HANDLE, "CMPI_RC_ERR_INVALID_HANDLE"},
    {CMPI_RC_ERR_INVALID_DATA_TYPE, "CMPI_RC_ERR_INVALID_DATA_TYPE"},
    {CMPI_RC_ERROR_SYSTEM, "CMPI_RC_ERROR_SYSTEM"},
    {CMPI_RC_ERROR, "CMPI_RC_ERROR"},
};

// A property list as CMPI wants it: null-terminated, or null.
class Property_List {
public:
    explicit Property_List(const Properties& properties) {
        if (!properties) {
            return;
        }
        for (const std::string& property : *properties) {
            _names.push_back(property.c_str());
        }
        _names.push_back(nullptr);
    }
    const char** get() { return _names.empty() ? nullptr : _names.data(); }

private:
    std::vector<const char*> _names;
};

const char* text_or_null(const std::string& text) {
    return text.empty() ? nullptr : text.c_str();
}

// Takes what `other` holds behind what is there; the first failure stays.
void append(Answer& answer, Answer&& other) {
    if (answer.ok() && !other.ok()) {
        answer.rc = other.rc;
        answer.message = std::move(other.message);
    }
    answer.done = answer.done && other.done;
    const auto move_all = [](auto& to, auto& from) {
        to.insert(to.end(), std::make_move_iterator(from.begin()),
                  std::make_move_iterator(from.end()));
    };
    move_all(answer.instances, other.instances);
    move_all(answer.paths, other.paths);
    move_all(answer.data, other.data);
}

} // namespace

std::string rc_name(int rc) {
    for (const Code_Name& each : code_names) {
        if (each.rc == rc) {
            return each.name;
        }
    }
    return "code " + std::to_string(rc);
}

const Cim_Instance& Answer::instance() const {
    if (instances.size() != 1) {
        throw Value_Error("the answer holds " + std::to_string(instances.size()) +
                          " instances, not one (" + rc_name(rc) + ")");
    }
    return instances.front();
}

const Cim_Value& Answer::return_value() const noexcept {
    static const Cim_Value nothing;
    return data.empty() ? nothing : data.front();
}

// ---- what the manager is made of

namespace {

std::shared_ptr<const tvrmof::Schema> schema_of(const Options& options) {
    if (options.schema != nullptr || options.mof.empty()) {
        return options.schema;
    }
    try {
        return std::make_shared<const tvrmof::Schema>(tvrmof::read_files(options.mof));
    } catch (const tvrmof::Error& error) {
        throw Start_Error(std::string("MOF: ") + error.what());
    }
}

} // namespace

Object_Manager::Rep::Rep(Object_Manager& manager, Options given)
    : options(std::move(given)), schema(schema_of(options)), module(options),
      books(tables_of(options.broker_version), schema.get(), options),
      side{books,
           manager,
           options,
           [this](Indication each) { return deliver(std::move(each)); },
           {}},
      broker(side), mis(module, side), instances(options.instances), filters(books) {
    if (!options.instance_file.empty()) {
        std::vector<Cim_Instance> read = read_instances(options.instance_file, schema.get());
        std::move(read.begin(), read.end(), std::back_inserter(instances));
    }
}

bool Object_Manager::Rep::registered_in(const std::string& name_space) const {
    return std::any_of(options.name_spaces.begin(), options.name_spaces.end(),
                       [&](const std::string& each) { return same_name(each, name_space); });
}

Answer Object_Manager::Rep::unknown(const std::string& class_name, const char* kind) const {
    if (schema != nullptr && schema->find(class_name) != nullptr) {
        return refusal(CMPI_RC_ERR_NOT_SUPPORTED, class_name + " is served with no " + kind);
    }
    return refusal(CMPI_RC_ERR_INVALID_CLASS, "there is no class " + class_name);
}

// ---- instances

Cim_Instance* Object_Manager::Rep::given(const Cim_Path& path) {
    const auto found = std::find_if(instances.begin(), instances.end(),
                                    [&](const Cim_Instance& each) { return each.path == path; });
    return found == instances.end() ? nullptr : &*found;
}

Cim_Instance Object_Manager::Rep::filtered(const Cim_Instance& instance,
                                           const Properties& properties) const {
    Cim_Instance result = instance;
    Instance_Content content{instance, nullptr, properties, {}, {}};
    std::erase_if(result.properties,
                  [&](const Named_Value& property) { return !content.passes(property.name); });
    return result;
}

template <class Ask>
Answer Object_Manager::Rep::each_class(const std::string& name_space, const std::string& class_name,
                                       const Call& how, bool names, const Properties& properties,
                                       Ask ask) {
    if (!how.through.empty()) {
        return ask(how.through, Cim_Path(name_space, class_name));
    }
    std::vector<std::string> classes = {class_name};
    if (const tvrmof::Class* const top = schema == nullptr ? nullptr : schema->find(class_name)) {
        classes = {top->name};
        for (const std::unique_ptr<tvrmof::Class>& each : schema->classes()) {
            if (each.get() != top && each->is_a(*top)) {
                classes.push_back(each->name);
            }
        }
    }
    Answer answer;
    answer.done = true;
    bool anybody = false;
    for (const std::string& each : classes) {
        const bool own = &each == &classes.front();
        if ((own || registered_in(name_space)) && mis.serves(each, Kind::instance)) {
            anybody = true;
            append(answer, ask(each, Cim_Path(name_space, each)));
        }
        const std::lock_guard lock(instances_mutex);
        for (const Cim_Instance& instance : instances) {
            if (!same_name(instance.class_name(), each) ||
                !same_name(instance.path.name_space, name_space)) {
                continue;
            }
            anybody = true;
            if (names) {
                answer.paths.push_back(instance.path);
            } else {
                answer.instances.push_back(filtered(instance, properties));
            }
        }
    }
    if (!anybody) {
        return refusal(CMPI_RC_ERR_INVALID_CLASS,
                       "nobody serves " + class_name + " in " + name_space);
    }
    return answer;
}

Answer Object_Manager::enumerate_instances(const std::string& name_space,
                                           const std::string& class_name,
                                           const Properties& properties, const Call& how) {
    return _rep->each_class(name_space, class_name, how, false, properties,
                            [&](const std::string& served, Cim_Path path) {
                                return _rep->call<CMPIInstanceMI>(
                                    served, Kind::instance, "enumerateInstances", how,
                                    [&](CMPIInstanceMI* mi, const CMPIContext* context,
                                        const CMPIResult* result, Answer&) {
                                        return mi->ft->enumerateInstances(
                                            mi, context, result, _rep->books.make(std::move(path)),
                                            Property_List(properties).get());
                                    });
                            });
}

Answer Object_Manager::enumerate_instance_names(const std::string& name_space,
                                                const std::string& class_name, const Call& how) {
    return _rep->each_class(name_space, class_name, how, true, {},
                            [&](const std::string& served, Cim_Path path) {
                                return _rep->call<CMPIInstanceMI>(
                                    served, Kind::instance, "enumerateInstanceNames", how,
                                    [&](CMPIInstanceMI* mi, const CMPIContext* context,
                                        const CMPIResult* result, Answer&) {
                                        return mi->ft->enumerateInstanceNames(
                                            mi, context, result, _rep->books.make(std::move(path)));
                                    });
                            });
}

Answer Object_Manager::get_instance(const Cim_Path& path, const Properties& properties,
                                    const Call& how) {
    if (how.through.empty()) {
        const std::lock_guard lock(_rep->instances_mutex);
        if (const Cim_Instance* const found = _rep->given(path)) {
            Answer answer;
            answer.done = true;
            answer.instances.push_back(_rep->filtered(*found, properties));
            return answer;
        }
    }
    const std::string& served = how.through.empty() ? path.class_name : how.through;
    if (!_rep->mis.serves(served, Kind::instance)) {
        const bool known = _rep->schema != nullptr && _rep->schema->find(served) != nullptr;
        return refusal(known ? CMPI_RC_ERR_NOT_FOUND : CMPI_RC_ERR_INVALID_CLASS,
                       "nobody serves " + path.text());
    }
    return _rep->call<CMPIInstanceMI>(
        served, Kind::instance, "getInstance", how,
        [&](CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result, Answer&) {
            return mi->ft->getInstance(mi, context, result, _rep->books.make(Cim_Path(path)),
                                       Property_List(properties).get());
        });
}

Answer Object_Manager::create_instance(const Cim_Path& path, const Cim_Instance& instance,
                                       const Call& how) {
    const std::string& served = how.through.empty() ? path.class_name : how.through;
    if (!_rep->mis.serves(served, Kind::instance)) {
        return _rep->unknown(served, "instances");
    }
    return _rep->call<CMPIInstanceMI>(
        served, Kind::instance, "createInstance", how,
        [&](CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result, Answer&) {
            return mi->ft->createInstance(mi, context, result, _rep->books.make(Cim_Path(path)),
                                          _rep->books.make(Cim_Instance(instance)));
        });
}

Answer Object_Manager::modify_instance(const Cim_Path& path, const Cim_Instance& instance,
                                       const Properties& properties, const Call& how) {
    if (how.through.empty()) {
        const std::lock_guard lock(_rep->instances_mutex);
        if (Cim_Instance* const found = _rep->given(path)) {
            for (const Named_Value& each : _rep->filtered(instance, properties).properties) {
                found->properties.set(each.name, each.value);
            }
            Answer answer;
            answer.done = true;
            answer.paths.push_back(path);
            return answer;
        }
    }
    const std::string& served = how.through.empty() ? path.class_name : how.through;
    if (!_rep->mis.serves(served, Kind::instance)) {
        return _rep->unknown(served, "instances");
    }
    return _rep->call<CMPIInstanceMI>(
        served, Kind::instance, "modifyInstance", how,
        [&](CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result, Answer&) {
            return mi->ft->modifyInstance(mi, context, result, _rep->books.make(Cim_Path(path)),
                                          _rep->books.make(Cim_Instance(instance)),
                                          Property_List(properties).get());
        });
}

Answer Object_Manager::delete_instance(const Cim_Path& path, const Call& how) {
    if (how.through.empty()) {
        const std::lock_guard lock(_rep->instances_mutex);
        if (const Cim_Instance* const found = _rep->given(path)) {
            _rep->instances.erase(_rep->instances.begin() + (found - _rep->instances.data()));
            Answer answer;
            answer.done = true;
            return answer;
        }
    }
    const std::string& served = how.through.empty() ? path.class_name : how.through;
    if (!_rep->mis.serves(served, Kind::instance)) {
        return _rep->unknown(served, "instances");
    }
    return _rep->call<CMPIInstanceMI>(
        served, Kind::instance, "deleteInstance", how,
        [&](CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result, Answer&) {
            return mi->ft->deleteInstance(mi, context, result, _rep->books.make(Cim_Path(path)));
        });
}

Answer Object_Manager::exec_query(const std::string& name_space, const std::string& class_name,
                                  const std::string& query, const std::string& language,
                                  const Call& how) {
    const std::string& served = how.through.empty() ? class_name : how.through;
    if (!_rep->mis.serves(served, Kind::instance)) {
        return _rep->unknown(served, "instances");
    }
    return _rep->call<CMPIInstanceMI>(
        served, Kind::instance, "execQuery", how,
        [&](CMPIInstanceMI* mi, const CMPIContext* context, const CMPIResult* result, Answer&) {
            return mi->ft->execQuery(mi, context, result,
                                     _rep->books.make(Cim_Path(name_space, class_name)),
                                     query.c_str(), language.c_str());
        });
}

// ---- methods

// What a method hands out must be what its declaration says.
void Object_Manager::Rep::check_method(const Cim_Path& path, const std::string& method,
                                       const Answer& answer) {
    const tvrmof::Class* const model = schema == nullptr ? nullptr : schema->find(path.class_name);
    const tvrmof::Feature* const declared =
        model == nullptr ? nullptr : model->find(method, tvrmof::Feature_Kind::method);
    if (declared == nullptr || !answer.ok()) {
        return;
    }
    const std::string place = model->name + "." + declared->name;
    const Cim_Value& value = answer.return_value();
    if (value.type() != Cim_Type::none && !fits(*declared, value.type(), value.is_array())) {
        books.fault(Fault_Kind::schema_mismatch,
                    place + " returned " + type_text(value.type(), value.is_array()));
    }
    for (const Named_Value& out : answer.out) {
        const tvrmof::Parameter* const parameter = declared->parameter(out.name);
        if (parameter == nullptr || !parameter->out()) {
            books.fault(Fault_Kind::schema_mismatch,
                        place + " has no output parameter " + out.name);
        } else if (out.value.type() != Cim_Type::none &&
                   !fits(*parameter, out.value.type(), out.value.is_array())) {
            books.fault(Fault_Kind::schema_mismatch,
                        place + ": output parameter " + out.name + " as " +
                            type_text(out.value.type(), out.value.is_array()));
        }
    }
}

Answer Object_Manager::invoke_method(const Cim_Path& path, const std::string& method,
                                     const Arguments& in, const Call& how) {
    const std::string& served = how.through.empty() ? path.class_name : how.through;
    if (!_rep->mis.serves(served, Kind::method)) {
        return _rep->unknown(served, "methods");
    }
    Answer whole =
        _rep->call<CMPIMethodMI>(served, Kind::method, "invokeMethod", how,
                                 [&](CMPIMethodMI* mi, const CMPIContext* context,
                                     const CMPIResult* result, Answer& answer) {
                                     Args_Object* const out = _rep->books.make_args({});
                                     const CMPIStatus status = mi->ft->invokeMethod(
                                         mi, context, result, _rep->books.make(Cim_Path(path)),
                                         method.c_str(), _rep->books.make_args(in), out);
                                     if (out->content) {
                                         answer.out = _rep->books.read(*out, "the end of the call");
                                     }
                                     return status;
                                 });
    _rep->check_method(path, method, whole);
    return whole;
}

// ---- associations

bool Object_Manager::Rep::are_related(const std::string& a, const std::string& b) const {
    return is_a(a, b) || is_a(b, a);
}

// One reference takes the path's instance, in its role, and another one the result's.
bool Object_Manager::Rep::joins(const tvrmof::Class& association, const Cim_Path& path,
                                const Association_Filter& filter) const {
    const auto takes = [&](const tvrmof::Feature& reference, const std::string& role,
                           const std::string& class_name) {
        return reference.kind == tvrmof::Feature_Kind::reference &&
               (role.empty() || same_name(role, reference.name)) &&
               (class_name.empty() || are_related(class_name, reference.target));
    };
    const auto& features = association.features;
    return std::any_of(features.begin(), features.end(), [&](const tvrmof::Feature* source) {
        return takes(*source, filter.role, path.class_name) &&
               std::any_of(features.begin(), features.end(), [&](const tvrmof::Feature* result) {
                   return result != source &&
                          takes(*result, filter.result_role, filter.result_class);
               });
    });
}

template <class Ask>
Answer Object_Manager::Rep::each_association(const Cim_Path& path, const Association_Filter& filter,
                                             const Call& how, Ask ask) {
    if (!how.through.empty()) {
        return ask(how.through);
    }
    if (schema == nullptr || schema->find(path.class_name) == nullptr) {
        return refusal(CMPI_RC_ERR_INVALID_CLASS, "there is no class " + path.class_name);
    }
    for (const std::string& each : {filter.association_class, filter.result_class}) {
        if (!each.empty() && schema->find(each) == nullptr) {
            return refusal(CMPI_RC_ERR_INVALID_PARAMETER, "there is no class " + each);
        }
    }
    Answer answer;
    answer.done = true;
    for (const std::unique_ptr<tvrmof::Class>& each : schema->classes()) {
        if (each->is_association() &&
            (filter.association_class.empty() || is_a(each->name, filter.association_class)) &&
            joins(*each, path, filter) && mis.serves(each->name, Kind::association)) {
            append(answer, ask(each->name));
        }
    }
    return answer;
}

Answer Object_Manager::associators(const Cim_Path& path, const Association_Filter& filter,
                                   const Properties& properties, const Call& how) {
    return _rep->each_association(path, filter, how, [&](const std::string& association) {
        return _rep->call<CMPIAssociationMI>(
            association, Kind::association, "associators", how,
            [&](CMPIAssociationMI* mi, const CMPIContext* context, const CMPIResult* result,
                Answer&) {
                return mi->ft->associators(
                    mi, context, result, _rep->books.make(Cim_Path(path)),
                    text_or_null(filter.association_class), text_or_null(filter.result_class),
                    text_or_null(filter.role), text_or_null(filter.result_role),
                    Property_List(properties).get());
            });
    });
}

Answer Object_Manager::associator_names(const Cim_Path& path, const Association_Filter& filter,
                                        const Call& how) {
    return _rep->each_association(path, filter, how, [&](const std::string& association) {
        return _rep->call<CMPIAssociationMI>(
            association, Kind::association, "associatorNames", how,
            [&](CMPIAssociationMI* mi, const CMPIContext* context, const CMPIResult* result,
                Answer&) {
                return mi->ft->associatorNames(
                    mi, context, result, _rep->books.make(Cim_Path(path)),
                    text_or_null(filter.association_class), text_or_null(filter.result_class),
                    text_or_null(filter.role), text_or_null(filter.result_role));
            });
    });
}

Answer Object_Manager::references(const Cim_Path& path, const std::string& association_class,
                                  const std::string& role, const Properties& properties,
                                  const Call& how) {
    return _rep->each_association(
        path, {association_class, "", role, ""}, how, [&](const std::string& association) {
            return _rep->call<CMPIAssociationMI>(
                association, Kind::association, "references", how,
                [&](CMPIAssociationMI* mi, const CMPIContext* context, const CMPIResult* result,
                    Answer&) {
                    return mi->ft->references(mi, context, result, _rep->books.make(Cim_Path(path)),
                                              text_or_null(association_class), text_or_null(role),
                                              Property_List(properties).get());
                });
        });
}

Answer Object_Manager::reference_names(const Cim_Path& path, const std::string& association_class,
                                       const std::string& role, const Call& how) {
    return _rep->each_association(
        path, {association_class, "", role, ""}, how, [&](const std::string& association) {
            return _rep->call<CMPIAssociationMI>(
                association, Kind::association, "referenceNames", how,
                [&](CMPIAssociationMI* mi, const CMPIContext* context, const CMPIResult* result,
                    Answer&) {
                    return mi->ft->referenceNames(
                        mi, context, result, _rep->books.make(Cim_Path(path)),
                        text_or_null(association_class), text_or_null(role));
                });
        });
}

// ---- the rest

Object_Manager::Object_Manager(Options options)
    : _rep(std::make_unique<Rep>(*this, std::move(options))) {}

Object_Manager::~Object_Manager() {
    shutdown();
    if (_rep->books.has_unseen_faults()) {
        for (const Fault& fault : _rep->books.faults()) {
            std::cerr << "object manager: " << fault.text << '\n';
        }
    }
}

const tvrmof::Schema* Object_Manager::schema() const noexcept {
    return _rep->schema.get();
}

bool Object_Manager::serves(const std::string& class_name, Kind kind) const {
    return _rep->mis.serves(class_name, kind);
}

Cim_Path Object_Manager::path_of(const std::string& name_space, const std::string& class_name,
                                 const Named_Values& properties) const {
    const tvrmof::Class* const model =
        _rep->schema == nullptr ? nullptr : _rep->schema->find(class_name);
    if (model == nullptr) {
        throw Value_Error("the schema has no class " + class_name);
    }
    Cim_Path path(name_space, model->name);
    for (const tvrmof::Feature* key : model->keys()) {
        const Cim_Value* const value = properties.find(key->name);
        if (value == nullptr || value->is_null()) {
            throw Value_Error(model->name + " wants the key " + key->name);
        }
        path.keys.push_back({key->name, *value});
    }
    return path;
}

void* Object_Manager::load(const std::string& class_name, Kind kind) {
    return _rep->mis.enter(class_name, kind).mi;
}

int Object_Manager::unload(const std::string& class_name, bool terminating) {
    const std::string served = _rep->declared_name(class_name);
    if (terminating) {
        _rep->unsubscribe_all(served);
    }
    const Filters::Turn turn(_rep->filters, served);
    if (!_rep->filters.subscriptions(served).empty()) {
        return CMPI_RC_ERR_FAILED;
    }
    const int rc = _rep->mis.unload(class_name, terminating);
    if (rc == CMPI_RC_OK) {
        _rep->filters.remove_all(served);
    }
    return rc;
}

void Object_Manager::shutdown() {
    if (_rep->is_shut_down.exchange(true)) {
        return;
    }
    _rep->unsubscribe_all({});
    _rep->mis.shutdown();
    _rep->filters.remove_all({});
    _rep->books.report_leaks();
}

std::vector<Fault> Object_Manager::faults() const {
    return _rep->books.faults();
}
std::vector<Fault> Object_Manager::take_faults() {
    return _rep->books.take_faults();
}
std::size_t Object_Manager::live_objects() const noexcept {
    return _rep->books.live();
}
std::size_t Object_Manager::live_clones() const noexcept {
    return _rep->books.live_clones();
}
const CMPIBroker* Object_Manager::broker() const noexcept {
    return _rep->broker.cmpi();
}

Object_Manager::Scope::Scope(Object_Manager& manager, const Call& call)
    : _frame(std::make_unique<Scope_Frame>(manager._rep->books, "a scope of the client")) {
    Named_Values entries;
    entries.set(CMPIPrincipal, call.principal.value_or(manager._rep->options.principal));
    entries.set(CMPIInvocationFlags, call.flags);
    Context_Object* const context = manager._rep->books.make_context(std::move(entries));
    context->is_argument = true;
    _context = context;
}

Object_Manager::Scope::~Scope() = default;

} // namespace tvrhost
