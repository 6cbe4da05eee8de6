/// \file
/// The process-wide registry of types, and the assembly of meta packages.
#pragma once

#include "brant/zero/Builder.hpp"
#include "brant/zero/meta/Argument.hpp"
#include "brant/zero/meta/Class.hpp"
#include "brant/zero/meta/DataType.hpp"
#include "brant/zero/meta/Enum.hpp"
#include "brant/zero/meta/EnumLiteral.hpp"
#include "brant/zero/meta/Operation.hpp"
#include "brant/zero/meta/Package.hpp"
#include "brant/zero/meta/PrimitiveType.hpp"
#include "brant/zero/meta/Property.hpp"

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace brant::zero::meta {

/// Makes a collection for an element and a property that the caller handles itself.
using CollectionFactory =
    std::function<std::unique_ptr<AbstractOwnedCollection>(ModelElementImpl* owner, Property const& property)>;
/// Makes an empty builder on a model.
using BuilderFactory = std::function<std::unique_ptr<Builder>(Model const& model)>;

/// What is known of all types of the process. Made on first use and never destroyed; reading needs no lock once the
/// packages are assembled.
class ZELKOR_API MetaRegistry {
  public:
    struct Names {
        std::string native;
        std::string script;
        std::string third;
    };

    /// \returns the registry, with the kernel's own package in it. Thread-safe.
    static MetaRegistry& getInstance();

    /// \returns the type of that dotted name, a primitive by its simple name, or a null handle.
    [[nodiscard]] Type getType(std::u16string const& dottedName) const;
    [[nodiscard]] PrimitiveType getPrimitiveType(std::u16string const& name) const;
    /// \returns the type of that script name, or a null handle.
    [[nodiscard]] Type getTypeByScriptName(std::string const& scriptName) const;
    void registerType(Type const& type, CollectionFactory collections, BuilderFactory builders);
    void registerTypeNames(Type const& type, std::string native, std::string script, std::string third);
    /// \returns the names registered for the type, or null.
    [[nodiscard]] Names const* names(Type const& type) const;
    /// \returns the factory of the type, empty when it has none.
    [[nodiscard]] CollectionFactory const& collectionFactory(Type const& type) const;
    [[nodiscard]] BuilderFactory const& builderFactory(Type const& type) const;
    /// \returns the number of registered types.
    [[nodiscard]] std::size_t registered() const noexcept { return entries_.size(); }

    [[nodiscard]] std::recursive_mutex& mutex() noexcept { return mutex_; }
    [[nodiscard]] Model const& metaModel() const noexcept { return model_; }
    [[nodiscard]] Model::Freezer const& freezer() const noexcept { return freezer_; }
    void addName(std::u16string const& name, Type const& type);

    /// The classes that the text forms know, in the order of registration; those of meta objects are not among them.
    [[nodiscard]] std::vector<schema::ClassTable const*> const& modelClasses() const noexcept { return classes_; }
    /// Replaces an earlier class of the same short name.
    void registerClass(schema::ClassTable const& table);

    /// Root packages, in the order of registration.
    [[nodiscard]] std::vector<Package> const& rootPackages() const noexcept { return roots_; }
    void registerRootPackage(Package const& package);
    void unregisterRootPackage(std::u16string const& uri);

  private:
    friend class AbstractMetaPackage;
    friend class KernelPackage;
    MetaRegistry();
    static MetaRegistry& raw();

    struct Entry {
        CollectionFactory collections;
        BuilderFactory builders;
        Names names;
        bool named = false;
    };
    [[nodiscard]] Entry const* entry(Type const& type) const;

    std::recursive_mutex mutex_;
    Model model_;
    Model::Freezer freezer_;
    std::unordered_map<std::u16string, Type> byName_;
    std::unordered_map<std::string, Type> byScriptName_;
    std::unordered_map<Type, Entry> entries_;
    std::vector<schema::ClassTable const*> classes_;
    std::vector<Package> roots_;
};

/// Calls an operation on an element by reflection.
class ZELKOR_API AbstractInvoker {
  public:
    virtual ~AbstractInvoker();
    virtual Value invoke(ModelElementImpl& element, std::vector<Value> const& arguments) const = 0;
};

/// Builds the run-time description of a schema from its tables, in two passes: first all objects, then all references
/// between them, so that a class may point at a class of a package that is created later.
class ZELKOR_API AbstractMetaPackage {
  public:
    AbstractMetaPackage(AbstractMetaPackage const&) = delete;
    AbstractMetaPackage& operator=(AbstractMetaPackage const&) = delete;

    /// \returns the class object made from the table. \requires the table to be one of this package.
    [[nodiscard]] Class classOf(schema::ClassTable const& table) const;
    /// All meta objects in creation order, without the root.
    [[nodiscard]] std::vector<NamedElement> const& objects() const noexcept { return objects_; }
    [[nodiscard]] Package const& rootPackage() const noexcept { return root_; }

  protected:
    AbstractMetaPackage() = default;
    ~AbstractMetaPackage() = default;

    Package createPackage(std::u16string const& name, std::u16string const& uri, boost::uuids::uuid const& uuid);
    Class createClass(std::u16string const& name, std::string const& scriptName, bool isAbstract, std::string const& uuid);
    DataType createDataType(std::u16string const& name, std::string const& scriptName, std::string const& uuid);
    Enum createEnum(std::u16string const& name, std::string const& uuid);
    EnumLiteral createEnumLiteral(std::u16string const& name, std::int64_t value, std::string const& uuid);
    Property createProperty(std::u16string const& name, int flags, bool composite, std::string const& uuid);
    Operation createOperation(std::u16string const& name, std::string const& uuid);
    Argument createArgument(std::u16string const& name, std::string const& uuid);
    void setPropertyIndex(Property const& property, std::int64_t index);

    /// Makes the root package and its import.
    void createRoot(schema::RootTable const& table);
    /// Makes the objects of one package.
    void instantiate(schema::PackageTable const& table);
    /// Makes the references of one package's objects and registers its types.
    void weave(schema::PackageTable const& table);
    /// \throws NoSuchType when the registry has no such primitive.
    PrimitiveType requirePrimitive(std::u16string const& name);

    Package root_;
    bool describesModels_ = true; ///< its classes are those of elements, not of meta objects

  private:
    Model const& model() const;
    static void announceType(Type const& type, char const* dottedName);
    Property instantiateProperty(schema::PropertyRow const& row);
    void instantiateOperations(schema::ClassTable const& table);
    void weaveProperties(Type const& owner, schema::PropertyRow const* rows, std::size_t count);
    void weaveOperations(Type const& owner, schema::ClassTable const& table);
    void weaveClass(schema::ClassTable const& table, Package const& package);
    void weaveEnum(schema::EnumTable const& table, Package const& package);

    std::vector<NamedElement> objects_;
};

/// \returns the type that a row names. \throws NoSuchType when the registry does not have it.
[[nodiscard]] ZELKOR_API Type requireType(char const* dottedName);

} // namespace brant::zero::meta
