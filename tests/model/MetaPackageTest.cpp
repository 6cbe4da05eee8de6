// The run-time description of the schema as a whole.

#include "model/ModelSupport.hpp"

#include "brant/zero/meta/MetaRegistry.hpp"
#include "brant/zero/meta/Names.hpp"
#include "zelkor/ast.hpp"
#include "zelkor/ast/MetaPackageZelkor_ast.hpp"

#include <gtest/gtest.h>

#include <set>

using namespace testmodel;
using zelkor::ast::MetaPackageZelkor_ast;

namespace {

template <class Object>
std::vector<Object> all() {
    std::vector<Object> found;
    for (meta::NamedElement const& object : MetaPackageZelkor_ast::getInstance().objects())
        if (Object const one = Object::cast(object)) found.push_back(one);
    return found;
}

} // namespace

TEST(MetaPackage, PropertiesSayWhatAllOfThemShare) {
    std::size_t single = 0;
    std::size_t withEmptyDefault = 0;
    std::size_t indexed = 0;
    for (meta::Property const& property : all<meta::Property>()) {
        SCOPED_TRACE(meta::qualifiedNameUtf8(property.getOwningType()));
        EXPECT_TRUE(property.getIsQualificationUnique());
        if (property.getMultiplicity() == 1) {
            ++single;
            EXPECT_TRUE(property.getIsOrdered() && property.getIsUnique());
        }
        // "Nothing" is a default of its own, apart from having none.
        withEmptyDefault += property.getHasDefaultValue() && property.getDefaultValue().empty();
        if (!property.getHasDefaultValue()) {
            EXPECT_TRUE(property.getDefaultValue().empty());
        }
        indexed += property.getPropertyIndex() > 0;
        if (property.getIsDerived()) {
            EXPECT_LE(property.getPropertyIndex(), 0);
        }
        if (meta::Property const opposite = property.getOpposite()) {
            EXPECT_EQ(opposite.getOpposite(), property);
            EXPECT_NE(opposite.getIsComposite(), property.getIsComposite());
        }
    }
    EXPECT_EQ(all<meta::Property>().size(), 246u);
    EXPECT_EQ(indexed, 220u);
    EXPECT_GT(single, 100u);
    EXPECT_GT(withEmptyDefault, 0u);
}

TEST(MetaPackage, OperationsReturnOneValueButTheTwoThatReturnLists) {
    std::set<std::u16string> lists;
    std::size_t arguments = 0;
    for (meta::Operation const& operation : all<meta::Operation>()) {
        EXPECT_TRUE(operation.getType());
        if (operation.getLower() == 0 && operation.getUpper() == 4294967295)
            lists.insert(operation.getName());
        else
            EXPECT_TRUE(operation.getLower() == 1 && operation.getUpper() == 1);
        for (meta::Argument const& argument : operation.getArguments()) {
            ++arguments;
            EXPECT_TRUE(argument.getType());
            EXPECT_TRUE(argument.getLower() == 1 && argument.getUpper() == 1);
        }
    }
    EXPECT_EQ(all<meta::Operation>().size(), 71u);
    EXPECT_EQ(arguments, 32u);
    EXPECT_EQ(lists.size(), 2u);
}

TEST(MetaPackage, TypesOfTheKernelAreFoundByNameToo) {
    MetaPackageZelkor_ast::getInstance();
    auto const& registry = meta::MetaRegistry::getInstance();
    EXPECT_EQ(registry.getType(u"Model"), meta::Type(Model::metaClass()));
    EXPECT_EQ(registry.getType(u"brant.zero.meta.Class"), meta::Type(meta::Class::metaClass()));
    EXPECT_FALSE(registry.getType(u"zelkor.ast.Nothing"));
    EXPECT_EQ(&MetaPackageZelkor_ast::getInstance(), &MetaPackageZelkor_ast::getInstance());
}
