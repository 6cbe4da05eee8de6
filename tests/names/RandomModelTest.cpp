// The writer against the plain rules, on random models.

#include "names/RandomModel.hpp"
#include "names/PlainNames.hpp"

#include <gtest/gtest.h>

using namespace testnames;

namespace {

TEST(RandomModels, AreNamedAsThePlainRulesSay) {
    std::size_t compared = 0;
    std::size_t longest = 0;
    for (std::uint32_t seed = 1; seed <= 400 && !HasFailure(); ++seed) {
        RandomModel model(seed);
        auto const expect = [&](std::string const& got, std::string const& expected) {
            EXPECT_EQ(got, expected) << "seed " << seed;
            ++compared;
            longest = std::max(longest, got.size());
        };
        for (za::Scope const& scope : model.scopes())
            expect(scope.getFullyQualifiedName(), plain::scopeName(scope));
        for (za::Symbol const& symbol : model.symbols()) {
            expect(symbol.getFullyQualifiedName(), plain::symbolName(symbol));
            expect(symbol.generateSignature(), plain::signature(symbol));
        }
        for (za::TemplateArg const& argument : model.arguments())
            for (bool const afterMark : {false, true})
                expect(argument.getFullyQualifiedName(afterMark), plain::argumentName(argument, afterMark));
        for (zt::Type const& type : model.types())
            for (bool const skip : {false, true}) {
                std::string const declared = model.name();
                expect(print(type, declared, skip), plain::typeName(type, declared, skip));
            }
    }
    // A generator that makes nothing of interest would agree with anything.
    EXPECT_GT(compared, 40000u);
    EXPECT_GT(longest, 150u);
}

} // namespace
