// Query terms as objects; that each class has those of its properties, the tests of the generator look at.

#include "model/ModelSupport.hpp"

#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

using namespace testmodel;
namespace za = zelkor::ast;

TEST(QueryTerm, ASubclassHasItsOwnObjectForTheSameProperty) {
    EXPECT_EQ(&za::Function::name(), &za::Function::name());
    EXPECT_EQ(za::Function::name().attachment().metaClass(), za::Function::metaClass());
    EXPECT_NE(static_cast<void const*>(&za::Function::name()), static_cast<void const*>(&za::Symbol::name()));
    EXPECT_EQ(za::Function::name().getProperty(), za::Symbol::name().getProperty());
    EXPECT_EQ(za::Scope::parent().getProperty(), Core::propertyOf(&za::Scope::Impl::rows[0]));
}

TEST(QueryTerm, TermsOfARunningQueryAreMembers) {
    struct Query : query::AbstractQuery {
    } query;
    za::Function::Constrainables const terms({query, query::SearchClassMatchMode::ClassAndSubclasses});
    EXPECT_EQ(&terms.query(), &query);
    EXPECT_EQ(terms.queriedClass(), za::Function::metaClass());
    EXPECT_EQ(&terms.Scope.attachment().query(), &terms);
    EXPECT_EQ(terms.Name.getProperty(), za::Function::name().getProperty());
}
