// The classes of the benched model and their features, told once. Plain records (Records.hpp) and the floor's
// trees (Floor.hpp) name their members alike, so one list of features serves both, and every contender that
// works by names: records are written to DOMs, floors are written as text and loaded, by these lists.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace zelkor::bench {

enum class Kind : std::uint8_t {
    Project,
    SourceFile,
    CompilationUnit,
    Namespace,
    Scope,
    Function,
    Method,
    Variable,
    Member,
    StructType,
    PointerType,
    QualifiedType,
    TypedefType,
    IntegerType,
    TemplateArg,
    IntegerConstant,
    SourcePosition,
};

inline constexpr std::array<std::string_view, 17> classNames{
    "Project",
    "source.SourceFile",
    "source.CompilationUnit",
    "Namespace",
    "Scope",
    "Function",
    "types.Method",
    "Variable",
    "types.Member",
    "types.StructType",
    "types.PointerType",
    "types.QualifiedType",
    "types.TypedefType",
    "types.IntegerType",
    "TemplateArg",
    "constants.IntegerConstant",
    "source.SourcePosition",
};
constexpr std::string_view className(Kind kind) {
    return classNames[static_cast<std::size_t>(kind)];
}

enum class StorageClass : std::uint8_t { None = 1, Extern, Static };
enum class Linkage : std::uint8_t { None = 1, Internal, External, ExternalCXX };
enum class Access : std::uint8_t { None = 1, Public, Protected, Private };
enum class Language : std::uint8_t { C = 2, CXX17 = 10 };
enum class IntegerKind : std::uint8_t {
    Char,
    SignedChar,
    UnsignedChar,
    SignedShort,
    UnsignedShort,
    SignedInt,
    UnsignedInt,
    SignedLong,
    UnsignedLong,
    SignedLongLong,
    UnsignedLongLong
};
enum class TemplateArgKind : std::uint8_t { Unknown, Type };

namespace detail {
using Literal = std::pair<unsigned, std::string_view>;
inline constexpr std::array storageClassLiterals{Literal{1, "None"}, Literal{2, "Extern"},
                                                 Literal{3, "Static"}};
inline constexpr std::array linkageLiterals{Literal{1, "None"}, Literal{2, "Internal"},
                                            Literal{3, "External"}, Literal{4, "ExternalCXX"}};
inline constexpr std::array accessLiterals{Literal{1, "None"}, Literal{2, "Public"}, Literal{3, "Protected"},
                                           Literal{4, "Private"}};
inline constexpr std::array languageLiterals{Literal{2, "C"}, Literal{10, "CXX17"}};
inline constexpr std::array integerKindLiterals{
    Literal{0, "Char"},           Literal{1, "SignedChar"},       Literal{2, "UnsignedChar"},
    Literal{3, "SignedShort"},    Literal{4, "UnsignedShort"},    Literal{5, "SignedInt"},
    Literal{6, "UnsignedInt"},    Literal{7, "SignedLong"},       Literal{8, "UnsignedLong"},
    Literal{9, "SignedLongLong"}, Literal{10, "UnsignedLongLong"}};
inline constexpr std::array templateArgKindLiterals{Literal{0, "Unknown"}, Literal{1, "Type"}};

constexpr auto const& literalsOf(StorageClass) {
    return storageClassLiterals;
}
constexpr auto const& literalsOf(Linkage) {
    return linkageLiterals;
}
constexpr auto const& literalsOf(Access) {
    return accessLiterals;
}
constexpr auto const& literalsOf(Language) {
    return languageLiterals;
}
constexpr auto const& literalsOf(IntegerKind) {
    return integerKindLiterals;
}
constexpr auto const& literalsOf(TemplateArgKind) {
    return templateArgKindLiterals;
}
} // namespace detail

/// The literal's name; empty for a number without one.
template <class Enumeration>
constexpr std::string_view literalName(Enumeration value) {
    for (auto const& [number, name] : detail::literalsOf(value))
        if (number == static_cast<unsigned>(value)) return name;
    return {};
}

template <class Enumeration>
constexpr bool literalNamed(std::string_view wanted, Enumeration& value) {
    for (auto const& [number, name] : detail::literalsOf(value)) {
        if (name != wanted) continue;
        value = static_cast<Enumeration>(number);
        return true;
    }
    return false;
}

enum class Form : std::uint8_t { Text, Number, Flag, Enumerated, Reference, References, Child, Children };

/// One feature of a class: its name in documents and the member that holds it.
template <Form form_, class Member, class Default = int>
struct Feature {
    static constexpr Form form = form_;
    std::string_view name;
    Member member;
    Default fallback{};

    /// Whether `object` holds the default value, which no document tells.
    template <class Object>
    constexpr bool absent(Object const& object) const {
        auto const& value = object.*member;
        if constexpr (form == Form::Text || form == Form::References || form == Form::Children)
            return value.empty();
        else if constexpr (form == Form::Reference || form == Form::Child)
            return !value;
        else
            return value == fallback;
    }
};

template <class FeatureType>
constexpr Form formOf = std::remove_cvref_t<FeatureType>::form;

template <class M>
constexpr auto text(std::string_view name, M member) {
    return Feature<Form::Text, M>{name, member};
}
template <class M>
constexpr auto number(std::string_view name, M member, unsigned fallback = 0) {
    return Feature<Form::Number, M, unsigned>{name, member, fallback};
}
template <class M>
constexpr auto flag(std::string_view name, M member, bool fallback = false) {
    return Feature<Form::Flag, M, bool>{name, member, fallback};
}
template <class M, class Enumeration>
constexpr auto enumerated(std::string_view name, M member, Enumeration fallback) {
    return Feature<Form::Enumerated, M, Enumeration>{name, member, fallback};
}
template <class M>
constexpr auto reference(std::string_view name, M member) {
    return Feature<Form::Reference, M>{name, member};
}
template <class M>
constexpr auto references(std::string_view name, M member) {
    return Feature<Form::References, M>{name, member};
}
template <class M>
constexpr auto child(std::string_view name, M member) {
    return Feature<Form::Child, M>{name, member};
}
template <class M>
constexpr auto children(std::string_view name, M member) {
    return Feature<Form::Children, M>{name, member};
}

template <class T>
constexpr auto locatedFeatures() {
    return std::tuple{child("DefPos", &T::defPos), children("DeclPos", &T::declPos), text("Name", &T::name)};
}

template <class T>
constexpr auto declarationFeatures() {
    return std::tuple_cat(locatedFeatures<T>(),
                          std::tuple{reference("Type", &T::type),
                                     enumerated("StorageClass", &T::storageClass, StorageClass::None),
                                     enumerated("Linkage", &T::linkage, Linkage::None)});
}

template <class T>
constexpr auto functionFeatures() {
    return std::tuple_cat(declarationFeatures<T>(),
                          std::tuple{child("Scope", &T::scope), children("Params", &T::params),
                                     children("TemplateArgs", &T::templateArgs),
                                     number("NumOptionalParams", &T::numOptionalParams),
                                     flag("IsInline", &T::isInline), flag("IsVariadic", &T::isVariadic)});
}

template <class T>
constexpr auto variableFeatures() {
    return std::tuple_cat(declarationFeatures<T>(), std::tuple{child("InitVal", &T::initVal)});
}

/// Records of scopes that are filled step by step hold no contents of their own.
template <class T>
constexpr auto scopeFeatures() {
    if constexpr (requires { &T::namespaces; })
        return std::tuple{children("Namespaces", &T::namespaces), children("Symbols", &T::symbols)};
    else if constexpr (requires { &T::symbols; })
        return std::tuple{children("Symbols", &T::symbols)};
    else
        return std::tuple{};
}

template <class T>
constexpr auto projectFeatures() {
    auto const sizes = std::tuple{number("LongNumBits", &T::longNumBits, 32),
                                  number("LongDoubleNumBits", &T::longDoubleNumBits, 96),
                                  number("PointerNumBits", &T::pointerNumBits, 32)};
    if constexpr (requires { &T::files; })
        return std::tuple_cat(
            std::tuple{children("Files", &T::files), children("Compilations", &T::compilations)}, sizes);
    else
        return sizes;
}

template <class T>
constexpr auto fileFeatures() {
    return std::tuple{text("Path", &T::path), text("WrittenName", &T::writtenName),
                      flag("IsInclude", &T::isInclude), flag("IsTopLevelFile", &T::isTopLevelFile),
                      references("IncludedFiles", &T::includedFiles)};
}

/// All features of class `T`, in the order of documents. `T::kind` tells the class.
template <class T>
constexpr auto featuresOf() {
    if constexpr (T::kind == Kind::Project)
        return projectFeatures<T>();
    else if constexpr (T::kind == Kind::SourceFile)
        return fileFeatures<T>();
    else if constexpr (T::kind == Kind::CompilationUnit)
        return std::tuple_cat(
            scopeFeatures<T>(),
            std::tuple{enumerated("Language", &T::language, Language::C), references("Files", &T::files)});
    else if constexpr (T::kind == Kind::Namespace)
        return std::tuple_cat(scopeFeatures<T>(),
                              std::tuple{text("Name", &T::name), flag("IsInline", &T::isInline)});
    else if constexpr (T::kind == Kind::Scope)
        return scopeFeatures<T>();
    else if constexpr (T::kind == Kind::Function)
        return functionFeatures<T>();
    else if constexpr (T::kind == Kind::Method)
        return std::tuple_cat(functionFeatures<T>(),
                              std::tuple{enumerated("Access", &T::access, Access::Public),
                                         flag("IsVirtual", &T::isVirtual),
                                         flag("IsThisConst", &T::isThisConst)});
    else if constexpr (T::kind == Kind::Variable)
        return variableFeatures<T>();
    else if constexpr (T::kind == Kind::Member)
        return std::tuple_cat(
            variableFeatures<T>(),
            std::tuple{enumerated("Access", &T::access, Access::None), flag("IsMutable", &T::isMutable)});
    else if constexpr (T::kind == Kind::StructType)
        return std::tuple_cat(locatedFeatures<T>(),
                              std::tuple{children("Members", &T::members), children("Methods", &T::methods),
                                         flag("IsAbstract", &T::isAbstract)});
    else if constexpr (T::kind == Kind::PointerType)
        return std::tuple_cat(locatedFeatures<T>(), std::tuple{reference("Type", &T::type)});
    else if constexpr (T::kind == Kind::QualifiedType)
        return std::tuple_cat(locatedFeatures<T>(),
                              std::tuple{reference("Type", &T::type), flag("IsConst", &T::isConst),
                                         flag("IsVolatile", &T::isVolatile)});
    else if constexpr (T::kind == Kind::TypedefType)
        return std::tuple_cat(locatedFeatures<T>(),
                              std::tuple{reference("Type", &T::type), flag("IsAlias", &T::isAlias)});
    else if constexpr (T::kind == Kind::IntegerType)
        return std::tuple_cat(locatedFeatures<T>(),
                              std::tuple{number("NumBits", &T::numBits), flag("IsSigned", &T::isSigned, true),
                                         enumerated("Kind", &T::integerKind, IntegerKind::SignedInt)});
    else if constexpr (T::kind == Kind::TemplateArg)
        return std::tuple{enumerated("Kind", &T::argKind, TemplateArgKind::Unknown),
                          reference("Type", &T::type)};
    else if constexpr (T::kind == Kind::IntegerConstant)
        return std::tuple{reference("Type", &T::type), text("Value", &T::value)};
    else
        return std::tuple{number("Line", &T::line), number("Col", &T::col), reference("File", &T::file)};
}

/// Calls `visit` with each feature of `T`, unrolled at compile time.
template <class T, class Visit>
constexpr void forEachFeature(Visit&& visit) {
    std::apply([&](auto const&... feature) { (visit(feature), ...); }, featuresOf<T>());
}

/// The place of the feature called `name` among those of `T`; their number when there is none.
template <class T>
constexpr std::size_t placeOf(std::string_view name) {
    std::size_t place = 0;
    bool found = false;
    forEachFeature<T>([&](auto const& feature) { found = found || feature.name == name || !++place; });
    return place;
}

/// Calls `visit` with each feature of `From` and the one of that name in `To`, which must have it.
template <class From, class To, class Visit>
constexpr void forEachShared(Visit&& visit) {
    constexpr auto from = featuresOf<From>();
    constexpr auto to = featuresOf<To>();
    [&]<std::size_t... at>(std::index_sequence<at...>) {
        (visit(std::get<at>(from), std::get<placeOf<To>(std::get<at>(from).name)>(to)), ...);
    }
    (std::make_index_sequence<std::tuple_size_v<decltype(from)>>());
}

} // namespace zelkor::bench
