/// \file
/// The schema as the kernel sees it: constant tables, one `ClassTable` per class and one `PropertyRow` per
/// property.
///
/// Every algorithm of the kernel asks questions of a row (owning? has an opposite? ordered?) and never names
/// a class. Tables are constant-initialised, live as long as the library and are read by any thread without a
/// lock.
#pragma once

#include "brant/zero/Export.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace boost::uuids {
struct uuid;
}

namespace brant::zero {

class Builder;
class ElementImpl;
class ModelElementImpl;
class ModelImpl;
class Value;

class AbstractOwnedCollection;

namespace meta {
class AbstractInvoker;
class AbstractMetaPackage;
class Class;
class DataType;
class Enum;
} // namespace meta

namespace schema {

/// What a property is, as far as the write path cares. The same words stand in the schema files.
enum class PropertyKind : std::uint8_t {
    Attribute,     ///< one plain value, a field of the element
    ManyAttribute, ///< an ordered list of plain values
    Reference,     ///< at most one element, contained or not
    ManyReference, ///< an ordered list of elements, contained or not
    ContainerEnd,  ///< the owner, seen from the owned side; stored as the containment link
    Map,           ///< contained elements keyed by one of their attributes
    View,          ///< the members of another collection that are of one class; stores nothing
    Derived        ///< computed on each read; stores nothing
};

/// The type of one value of a property.
enum class ValueKind : std::uint8_t {
    Boolean,
    Integer,          ///< signed, 32 bits
    UnlimitedNatural, ///< unsigned, 32 bits
    Integer64,
    UInteger64,
    Real,
    String,    ///< UTF-16 text
    StdString, ///< bytes
    Enumeration,
    Datatype,
    Element
};

enum PropertyFlag : std::uint16_t {
    Contained = 1,
    Ordered = 2,
    Unique = 4,
    IsDerived = 8,
    ReadOnly = 16,
    IsTransient = 32,
    HasDefault = 64,    ///< the schema states a default text
    DefaultIsNone = 128 ///< the schema states an empty default
};

inline constexpr std::uint16_t noIndex = 0xFFFF;

struct ClassTable;
struct EnumTable;
struct DatatypeTable;

struct PropertyRow {
    char const* name;
    char const* identity;
    PropertyKind kind;
    ValueKind valueKind;
    std::uint16_t flags;
    std::uint16_t index;         ///< number in the class chain, or `noIndex`
    std::uint32_t offset;        ///< of the field in the element, in bytes
    std::uint32_t builderOffset; ///< of the field in the builder, in bytes
    ClassTable const* owner;     ///< null for a field of a datatype
    ClassTable const* target;    ///< of an element-valued property
    EnumTable const* enumeration;
    PropertyRow const* opposite; ///< the other end of the association
    PropertyRow const* related;  ///< the key of a map, the collection behind a view
    char const* defaultText;     ///< textual form, null when the schema states none
    std::uint64_t defaultBits;   ///< the initial value of a scalar field
    Value (*derived)(ModelElementImpl const&,
                     PropertyRow const&); ///< null while a derived property has no body
    void (*customText)(ModelElementImpl&,
                       std::u16string const&); ///< replaces the common setter of a `String`
    mutable ElementImpl* object;               ///< the `meta::Property` made from this row

    [[nodiscard]] constexpr bool contained() const noexcept { return (flags & Contained) != 0; }
    [[nodiscard]] constexpr bool ordered() const noexcept { return (flags & Ordered) != 0; }
    [[nodiscard]] constexpr bool unique() const noexcept { return (flags & Unique) != 0; }
    [[nodiscard]] constexpr bool derivedFlag() const noexcept { return (flags & IsDerived) != 0; }
    [[nodiscard]] constexpr bool readOnly() const noexcept { return (flags & ReadOnly) != 0; }
    [[nodiscard]] constexpr bool transient() const noexcept { return (flags & IsTransient) != 0; }
    [[nodiscard]] constexpr bool stored() const noexcept { return index != noIndex; }
    [[nodiscard]] constexpr bool refersToElements() const noexcept { return valueKind == ValueKind::Element; }
    /// True for a stored end through which this element owns others.
    [[nodiscard]] constexpr bool owning() const noexcept { return contained() && stored(); }
    [[nodiscard]] constexpr bool many() const noexcept {
        return kind == PropertyKind::ManyAttribute || kind == PropertyKind::ManyReference ||
               kind == PropertyKind::Map || kind == PropertyKind::View || manyDerived;
    }
    bool manyDerived = false; ///< a derived property that yields a list
};

struct ArgumentRow {
    char const* name;
    char const* identity;
    char const* type; ///< dotted name of a class, or the name of a primitive
    bool isInput;
    mutable ElementImpl* object;
};

struct OperationRow {
    char const* name;
    char const* identity;
    char const* type;
    std::uint32_t lower;
    std::uint32_t upper;
    bool isStatic;
    bool isAbstract;
    bool callable; ///< may be called by reflection once its body is there
    ArgumentRow const* arguments;
    std::uint16_t argumentCount;
    meta::AbstractInvoker* (*invoker)(); ///< null while there is no body
    mutable ElementImpl* object;
};

struct LiteralRow {
    char const* name;
    char const* identity;
    std::int64_t value;
    mutable ElementImpl* object;
};

struct EnumTable {
    char const* name;
    char const* qualifiedName; ///< dotted
    char const* nativeName;
    char const* scriptName;
    char const* identity;
    LiteralRow const* literals; ///< in declaration order
    std::uint16_t literalCount;
    void (*registerType)(meta::Enum const&); ///< collection factory and text forms
    mutable ElementImpl* object;
};

struct DatatypeTable {
    char const* name;
    char const* qualifiedName;
    char const* nativeName;
    char const* scriptName;
    char const* identity;
    PropertyRow const* rows;
    std::uint16_t rowCount;
    void (*registerType)(meta::DataType const&); ///< collection factory and field access
    mutable ElementImpl* object;
};

struct ClassTable {
    char const* name;
    char const* shortName;     ///< as the text forms spell it: `Function`, `types.PointerType`
    char const* qualifiedName; ///< dotted
    char const* nativeName;
    char const* scriptName;
    char const* identity;
    ClassTable const* base;
    ClassTable const* const* chain; ///< from the root class down to this one, `depth + 1` entries
    std::uint16_t depth;
    std::uint16_t count; ///< stored properties of the whole chain plus one
    bool isAbstract;
    std::uint32_t bodySize;  ///< of an element, in bytes, without what it holds elsewhere
    PropertyRow const* rows; ///< own properties in declaration order
    std::uint16_t rowCount;
    PropertyRow const* const* stored; ///< by index; entry 0 is null
    OperationRow const* operations;
    std::uint16_t operationCount;
    ModelElementImpl* (*construct)(ModelImpl*, boost::uuids::uuid const&);
    std::unique_ptr<Builder> (*makeBuilder)();
    meta::Class const& (*metaClass)(); ///< assembles the package on the first call
    std::unique_ptr<AbstractOwnedCollection> (*makeCollection)(ModelElementImpl* owner,
                                                               PropertyRow const& row);
    mutable ElementImpl* object; ///< the `meta::Class` made from this table

    /// \returns whether this class is `other` or one of its subclasses. Constant time.
    [[nodiscard]] constexpr bool conformsTo(ClassTable const& other) const noexcept {
        return depth >= other.depth && chain[other.depth] == &other;
    }
    /// \returns the row with that index in the chain, or null.
    [[nodiscard]] constexpr PropertyRow const* byIndex(std::size_t index) const noexcept {
        return index > 0 && index < count ? stored[index] : nullptr;
    }
};

/// One package and what it declares, in creation order.
struct PackageTable {
    char const* name;
    char const* qualifiedName;
    char const* uri;
    char const* identity;
    PackageTable const* parent;
    struct Member {
        ClassTable const* classTable;
        DatatypeTable const* datatype;
    };
    Member const* members;
    std::uint16_t memberCount;
    EnumTable const* const* enums;
    std::uint16_t enumCount;
    mutable ElementImpl* object;
};

/// A whole schema: its root and its packages, parents first.
struct RootTable {
    char const* identity;
    char const* uri;
    char const* importedUri;
    PackageTable const* packages;
    std::uint16_t packageCount;
};

} // namespace schema

/// The class of all elements; it has no properties.
extern ZELKOR_API schema::ClassTable const modelElementTable;

} // namespace brant::zero
