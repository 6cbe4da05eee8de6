// The four walks down a type: what each takes off, and that no chain is too long or too crooked for them.

#include "zelkor/ast.hpp"

#include <boost/uuid/uuid_io.hpp>

#include <gtest/gtest.h>

#include <map>

namespace za = zelkor::ast;
namespace zt = zelkor::ast::types;

namespace {

using Walk = zt::Type (*)(zt::Type const&);

struct NamedWalk {
    char const* name;
    Walk walk;
};
NamedWalk const walks[] = {
    {"skipTypedefs", &zt::Type::skipTypedefs},
    {"skipQualifiers", &zt::Type::skipQualifiers},
    {"skipTyperefs", &zt::Type::skipTyperefs},
    {"getUnderlyingType", &zt::Type::getUnderlyingType},
};

template <class T>
zt::Type made(brant::zero::Model const& model) {
    return T::create(model);
}

/// One layer per letter, the outermost first.
zt::Type makeNode(brant::zero::Model const& model, char letter) {
    static std::map<char, zt::Type (*)(brant::zero::Model const&)> const makers = {
        {'T', made<zt::TypedefType>},         {'Q', made<zt::QualifiedType>},
        {'A', made<zt::TypeAttrType>},        {'O', made<zt::TypeOpType>},
        {'B', made<zt::TyperefType>},         {'P', made<zt::PointerType>},
        {'L', made<zt::LValueReferenceType>}, {'R', made<zt::RValueReferenceType>},
        {'M', made<zt::PointerToMemberType>}, {'Y', made<zt::ArrayType>},
        {'V', made<zt::VectorType>},          {'D', made<zt::BasedType>},
        {'f', made<zt::FunctionType>},        {'e', made<zt::EnumType>},
        {'i', made<zt::IntegerType>}};
    return makers.at(letter)(model);
}

/// \returns the layers of a chain; the last one has no base.
std::vector<zt::Type> makeChain(brant::zero::Model const& model, std::string const& letters) {
    std::vector<zt::Type> chain;
    for (char const letter : letters) {
        zt::Type const node = makeNode(model, letter);
        if (!chain.empty()) zt::BasedType::cast(chain.back()).setType(node);
        chain.push_back(node);
    }
    return chain;
}

struct Row {
    char const* layers;
    /// Position of the answer in the chain, in the order of `walks`; -1 for null.
    int answers[4];
};

Row const rows[] = {
    {"i", {0, 0, 0, 0}},    {"Ti", {1, 0, 1, 1}},   {"TQTi", {1, 0, 3, 3}},  {"Qi", {0, 1, 1, 1}},
    {"QQi", {0, 2, 2, 2}},  {"QTi", {0, 1, 2, 2}},  {"QPi", {0, 1, 1, 2}},   {"TAOi", {3, 0, 3, 3}},
    {"TBTi", {3, 0, 3, 3}}, {"Bi", {1, 0, 1, 1}},   {"Pi", {0, 0, 0, 1}},    {"TPTi", {1, 0, 1, 3}},
    {"PLQi", {0, 0, 0, 3}}, {"f", {0, 0, 0, 0}},    {"Pf", {0, 0, 0, 1}},    {"TQPTYVMRLDe", {1, 0, 2, 10}},
    {"P", {0, 0, 0, -1}},   {"T", {-1, 0, -1, -1}}, {"Q", {0, -1, -1, -1}},  {"TQ", {1, 0, -1, -1}},
    {"B", {-1, 0, -1, -1}}, {"TP", {1, 0, 1, -1}},  {"AQTOi", {1, 0, 4, 4}}, {"D", {0, 0, 0, -1}},
};

} // namespace

TEST(TypeWalk, EachTakesOffItsOwnLayers) {
    za::Ast ast;
    for (Row const& row : rows) {
        std::vector<zt::Type> const chain = makeChain(ast.getModel(), row.layers);
        for (std::size_t i = 0; i < std::size(walks); ++i) {
            SCOPED_TRACE(std::string(walks[i].name) + " of " + row.layers);
            zt::Type const found = walks[i].walk(chain.front());
            EXPECT_EQ(found, row.answers[i] < 0 ? zt::Type() : chain.at(row.answers[i]));
        }
    }
}

TEST(TypeWalk, TakesNull) {
    for (NamedWalk const& walk : walks)
        EXPECT_EQ(walk.walk(nullptr), nullptr) << walk.name;
}

TEST(TypeWalk, StopsAtADeadType) {
    za::Ast ast;
    std::vector<zt::Type> const chain = makeChain(ast.getModel(), "Ti");
    chain[1].destroy();
    EXPECT_FALSE(zt::Type::skipTypedefs(chain[0]));
    EXPECT_FALSE(zt::Type::getUnderlyingType(chain[1]));
}

TEST(TypeWalk, ALongChainIsALoop) {
    constexpr std::size_t depth = 100'000;
    za::Ast ast;
    auto tx = ast.getModel().beginTransaction();
    for (char const layer : {'T', 'Q', 'P'}) {
        std::vector<zt::Type> const chain = makeChain(ast.getModel(), std::string(depth, layer) + "i");
        EXPECT_EQ(zt::Type::getUnderlyingType(chain[0]), chain[depth]);
        EXPECT_EQ(zt::Type::skipTyperefs(chain[0]), layer == 'P' ? chain[0] : chain[depth]);
        EXPECT_EQ(zt::Type::skipTypedefs(chain[0]), layer == 'T' ? chain[depth] : chain[0]);
        EXPECT_EQ(zt::Type::skipQualifiers(chain[0]), layer == 'Q' ? chain[depth] : chain[0]);
    }
    tx.commit();
}

TEST(TypeWalk, ACircleHasNothingBelow) {
    for (std::string const layers : {"T", "TT", "TTT", "TTTTTTT"}) {
        for (std::size_t entry = 0; entry < layers.size(); ++entry) {
            SCOPED_TRACE(layers + " back to " + std::to_string(entry));
            za::Ast ast;
            std::vector<zt::Type> const chain = makeChain(ast.getModel(), layers);
            zt::BasedType::cast(chain.back()).setType(chain[entry]);
            EXPECT_EQ(zt::Type::skipTypedefs(chain[0]), nullptr);
            EXPECT_EQ(zt::Type::skipTyperefs(chain[0]), nullptr);
            EXPECT_EQ(zt::Type::getUnderlyingType(chain[0]), nullptr);
            EXPECT_EQ(zt::Type::skipQualifiers(chain[0]), chain[0]);
        }
    }
    za::Ast ast;
    std::vector<zt::Type> const mixed = makeChain(ast.getModel(), "TQP");
    zt::BasedType::cast(mixed.back()).setType(mixed[0]);
    EXPECT_EQ(zt::Type::skipTypedefs(mixed[0]), mixed[1]);
    EXPECT_EQ(zt::Type::skipTyperefs(mixed[0]), mixed[2]);
    EXPECT_EQ(zt::Type::getUnderlyingType(mixed[0]), nullptr);
}

TEST(TypeWalk, GoesThroughAPlaceholderOnceItsTargetIsThere) {
    za::Ast ast;
    brant::zero::Model const model = ast.getModel();
    std::vector<zt::Type> const chain = makeChain(model, "T");
    boost::uuids::uuid const id = brant::zero::ElementImpl::generateNewUuid();
    brant::zero::ProxyId where;
    std::string const text = boost::uuids::to_string(id);
    where.element.assign(text.begin(), text.end());
    zt::TypedefType::cast(chain[0]).setType(
        zt::Type::cast(model.createProxy(zt::IntegerType::metaClass(), where)));
    EXPECT_TRUE(zt::Type::skipTypedefs(chain[0]).isProxy());
    zt::IntegerType const target = zt::IntegerType::create(model, id);
    EXPECT_EQ(zt::Type::skipTypedefs(chain[0]), target);
}

TEST(EnumSign, IsThatOfTheIntegerBelow) {
    struct SignRow {
        char const* storage;
        bool integerIsSigned;
        bool expected;
    };
    SignRow const table[] = {
        {"", false, true},    {"i", false, false},   {"i", true, true},
        {"Ti", false, false}, {"QTi", false, false}, {"Pi", false, false},
        {"f", false, true},   {"e", false, true},    {"T", false, true},
    };
    for (SignRow const& row : table) {
        SCOPED_TRACE(row.storage);
        za::Ast ast;
        zt::EnumType const type = zt::EnumType::create(ast.getModel());
        std::vector<zt::Type> const chain = makeChain(ast.getModel(), row.storage);
        if (!chain.empty()) {
            type.setStorageType(chain[0]);
            if (auto const integer = zt::IntegerType::cast(chain.back()))
                integer.setIsSigned(row.integerIsSigned);
        }
        EXPECT_EQ(type.getIsSigned(), row.expected);
        EXPECT_EQ(type.getPropertyValue(brant::zero::Core::propertyOf(&zt::EnumType::Impl::rows[7]))
                      .getValue<bool>(),
                  row.expected);
    }
}
