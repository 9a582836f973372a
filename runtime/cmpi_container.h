// Named lists of values: CMPI arguments, object paths and instances behind one interface, which
// conversion reads into an instance or fills from one.
#ifndef TVR_RUNTIME_CMPI_CONTAINER_H
#define TVR_RUNTIME_CMPI_CONTAINER_H

#include "runtime/cmpi_conversion.h"

namespace cimple {

// Stack objects, used by one thread. The wrapped object stays its owner's.
class Container {
public:
    virtual ~Container() = default;

    // Number of entries.
    virtual uint32 get_size() const = 0;
    // 0, or -1 with a line in the log, as all below.
    virtual int get_name(uint32 index, String& name) const = 0;
    // A value of exactly the kind `expected`.
    virtual int get_value(uint32 index, sint32 expected, Value& value) const = 0;
    // `flags` is the feature's flag word.
    virtual int set_value(const char* name, const Value_View& value, uint32 flags) = 0;
};

// Reads a container into `instance`, which is made if there is none: every feature is NULL but
// those that the container has, of which with `flags` not 0 only those count that share a bit with
// it. Unknown names and values that don't convert are logged and passed over. Returns 0.
int convert(const Container& container, const Meta_Structure* structure, uint32 flags,
            Instance*& instance);

// Fills a container with the features of `instance` that aren't NULL, and with `flags` not 0 only
// those that share a bit with it. Values that don't convert are logged and left out. -1 if there
// is no instance, else 0.
int convert(Container& container, const Instance* instance, uint32 flags);

// What the three forms share: they differ in the calls that read and write an entry.
class CMPI_Container : public Container {
public:
    int get_name(uint32 index, String& name) const override;
    int get_value(uint32 index, sint32 expected, Value& value) const override;

protected:
    CMPI_Container(const Meta_Repository* repository, const CMPIBroker* broker,
                   const char* name_space, int depth, CMPI_Made* made) noexcept
        : _repository(repository), _broker(broker), _name_space(name_space), _depth(depth),
          _made(made) {}

    // The entry and, if `name` isn't null, its name; false with a line in the log if it can't be
    // read.
    virtual bool read(uint32 index, CMPIString** name, CMPIData& data) const = 0;
    // Repairs of what clients send: before and behind the conversion of a datum.
    virtual void adapt(sint32 /*expected*/, CMPIData& /*data*/) const {}
    virtual void adapt(sint32 /*expected*/, Value& /*value*/) const {}

    // The CMPI form of a value, in the container's namespace; not the container's to release.
    int to_data(const Value_View& value, uint32 flags, CMPIData& data) const {
        return _to_cmpi_data(_broker, _name_space, value, flags, data, _made);
    }

private:
    const Meta_Repository* _repository;
    const CMPIBroker* _broker;
    const char* _name_space;
    int _depth;
    CMPI_Made* _made;
};

// Arguments of a method. A string is cast to the scalar that a parameter wants. What is set under
// the name "return_value" is kept apart.
class CMPIArgs_Container : public CMPI_Container {
public:
    CMPIArgs_Container(const Meta_Repository* repository, const CMPIBroker* broker,
                       const char* name_space, const CMPIArgs* args) noexcept
        : CMPI_Container(repository, broker, name_space, 0, nullptr), _args(args) {}

    uint32 get_size() const override;
    int set_value(const char* name, const Value_View& value, uint32 flags) override;

    const CMPIValue& return_value() const noexcept { return _return_value; }
    CMPIType return_type() const noexcept { return _return_type; }

protected:
    bool read(uint32 index, CMPIString** name, CMPIData& data) const override;
    void adapt(sint32 expected, CMPIData& data) const override;
    void adapt(sint32 expected, Value& value) const override;

private:
    const CMPIArgs* _args;
    CMPIType _return_type = 0;
    CMPIValue _return_value{};
};

// Keys of a path. Integers, which a client may know only as 64-bit ones, are narrowed.
class CMPIObjectPath_Container : public CMPI_Container {
public:
    CMPIObjectPath_Container(const Meta_Repository* repository, const CMPIBroker* broker,
                             const char* name_space, const CMPIObjectPath* path, int depth = 0,
                             CMPI_Made* made = nullptr) noexcept
        : CMPI_Container(repository, broker, name_space, depth, made), _path(path) {}

    uint32 get_size() const override;
    int set_value(const char* name, const Value_View& value, uint32 flags) override;

protected:
    bool read(uint32 index, CMPIString** name, CMPIData& data) const override;
    void adapt(sint32 expected, Value& value) const override;

private:
    const CMPIObjectPath* _path;
};

// Properties of an instance. Object managers are known to throw from the read of one, which counts
// as a failure of that property.
class CMPIInstance_Container : public CMPI_Container {
public:
    CMPIInstance_Container(const Meta_Repository* repository, const CMPIBroker* broker,
                           const char* name_space, const CMPIInstance* instance, int depth = 0,
                           CMPI_Made* made = nullptr) noexcept
        : CMPI_Container(repository, broker, name_space, depth, made), _instance(instance) {}

    uint32 get_size() const override;
    int set_value(const char* name, const Value_View& value, uint32 flags) override;

protected:
    bool read(uint32 index, CMPIString** name, CMPIData& data) const override;

private:
    const CMPIInstance* _instance;
};

} // namespace cimple

#endif
