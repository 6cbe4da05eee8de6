// One walk over all classes and all their properties: what the schema promises holds for each of them.

#include "model/ModelSupport.hpp"

#include "brant/zero/Map.hpp"
#include "brant/zero/Primitive.hpp"
#include "brant/zero/meta/Names.hpp"
#include "zelkor/ast.hpp"
#include "zelkor/ast/MetaPackageZelkor_ast.hpp"
#include "zelkor/ast/io.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <map>
#include <set>

using namespace testmodel;

namespace {

/// Counts what a walk has visited, by kind of property; prints it, and a kind that was never visited fails.
class Tally {
  public:
    explicit Tally(char const* what) : what_(what) {}
    void count(PropertyKind kind) { ++counts_[kind]; }
    void finish(std::set<PropertyKind> const& expected) {
        static char const* const names[] = {"attribute",      "many attribute", "reference",
                                            "many reference", "container end",  "map",
                                            "view",           "derived"};
        std::cout << what_ << ':';
        for (PropertyKind const kind : expected) {
            std::cout << "  " << names[static_cast<int>(kind)] << ' ' << counts_[kind];
            EXPECT_GT(counts_[kind], 0u) << what_ << ": no " << names[static_cast<int>(kind)];
        }
        std::cout << '\n';
    }

  private:
    char const* what_;
    std::map<PropertyKind, std::size_t> counts_;
};

using enum PropertyKind;
std::set<PropertyKind> const storedKinds = {Attribute,     ManyAttribute, Reference,
                                            ManyReference, ContainerEnd,  Map};
std::set<PropertyKind> const changeableKinds = {Attribute,    ManyAttribute, Reference, ManyReference,
                                                ContainerEnd, Map,           View};

/// Calls `visit` for each property of each class that has elements, with a fresh element of the class.
void forEachProperty(char const* what, std::set<PropertyKind> const& kinds,
                     std::function<void(ModelElement const&, PropertyRow const&)> const& visit) {
    Tally tally(what);
    for (ClassTable const* table : classes()) {
        if (table->isAbstract) continue;
        for (PropertyRow const* row : propertiesOf(*table)) {
            if (!kinds.contains(row->kind)) continue;
            SCOPED_TRACE(std::string(table->shortName) + ", " + nameOf(*row));
            Model const model = newModel();
            visit(make(model, *table), *row);
            tally.count(row->kind);
        }
    }
    tally.finish(kinds);
}

meta::Property property(PropertyRow const& row) {
    return Core::propertyOf(&row);
}

/// \returns the elements or values that a many-valued property holds now.
std::vector<Value> contents(AbstractOwnedCollection& collection) {
    if (ReferenceCollection* const references = collection.asReferences()) {
        std::vector<Value> values;
        for (ModelElement const& element : references->getAllValuesAndProxies())
            values.push_back(Value::own<ModelElement>(element.getMetaClass(), ValueFlags::One, element));
        return values;
    }
    return static_cast<AbstractPrimitiveCollection&>(collection).getAllValues();
}

ModelElement target(ModelElement const& element, PropertyRow const& row) {
    return element.getPropertyValue(property(row)).getValue<ModelElement>();
}

/// The initial bits of a scalar must be what the schema's default text says.
std::uint64_t bitsOf(PropertyRow const& row, std::string const& text) {
    if (row.valueKind == schema::ValueKind::Boolean) {
        EXPECT_TRUE(text == "true" || text == "false") << text;
        return text == "true" ? 1 : 0;
    }
    if (row.valueKind == schema::ValueKind::Enumeration) {
        for (std::uint16_t i = 0; i < row.enumeration->literalCount; ++i)
            if (row.enumeration->literals[i].name == text)
                return static_cast<std::uint32_t>(row.enumeration->literals[i].value);
        ADD_FAILURE() << "no literal " << text;
    }
    return std::stoull(text);
}

} // namespace

TEST(Conformance, DefaultsAreThoseOfTheSchema) {
    forEachProperty("defaults", changeableKinds, [](ModelElement const& element, PropertyRow const& row) {
        ModelElementImpl& body = *element.get();
        std::string const text = row.defaultText == nullptr ? "" : row.defaultText;
        EXPECT_EQ(element.hasPropertyValue(property(row)), row.kind == Attribute);
        if (row.kind == Attribute && row.valueKind == schema::ValueKind::StdString)
            EXPECT_EQ(Core::field<std::string>(body, row), text);
        else if (row.kind == Attribute && row.valueKind == schema::ValueKind::String)
            EXPECT_TRUE(Core::field<std::u16string>(body, row).empty() && text.empty());
        else if (row.kind == Attribute)
            EXPECT_EQ(Core::readBits(body, row), text.empty() ? 0 : bitsOf(row, text));
        else if (row.kind == Reference || row.kind == ContainerEnd)
            EXPECT_EQ(target(element, row), nullptr);
        else
            EXPECT_EQ(sizeOf(Core::collection(body, row)), 0u);
        EXPECT_EQ((row.flags & (schema::HasDefault | schema::DefaultIsNone)) != 0,
                  property(row).getHasDefaultValue());
    });
}

TEST(Conformance, WhatIsSetIsReadBackAndTheOtherEndAgrees) {
    forEachProperty("set and get", changeableKinds, [](ModelElement const& element, PropertyRow const& row) {
        Model const model = element.getModel();
        std::vector<ModelElement> const others = prepareChange(model, row);
        applyChange(element, row, others);
        EXPECT_TRUE(element.hasPropertyValue(property(row)));
        if (row.kind == Attribute) {
            EXPECT_EQ(element.getPropertyValue(property(row)), sampleValue(row));
        } else if (row.kind == ManyAttribute) {
            EXPECT_EQ(contents(Core::collection(*element.get(), row)),
                      (std::vector<Value>{sampleValue(row, 0), sampleValue(row, 1)}));
        } else if (row.kind == Reference || row.kind == ContainerEnd) {
            EXPECT_EQ(target(element, row), others[0]);
        } else {
            auto const members = Core::collection(*element.get(), row).asReferences()->getAllValues();
            EXPECT_EQ(members, others);
        }
        PropertyRow const& held = row.kind == View ? *row.related : row;
        for (ModelElement const& other : others) {
            ModelElement const owner = row.kind == ContainerEnd ? other : element;
            ModelElement const child = row.kind == ContainerEnd ? element : other;
            bool const owned = row.kind == ContainerEnd || row.contained();
            EXPECT_EQ(child.container(), owned ? owner : ModelElement());
            if (!owned) continue;
            EXPECT_EQ(child.containmentFeature(), property(row.kind == ContainerEnd ? *row.opposite : held));
            if (held.opposite != nullptr) {
                EXPECT_TRUE(Core::inverseContains(*other.get(), element.get(), *held.opposite));
                EXPECT_TRUE(other.hasPropertyValue(property(*held.opposite)));
            }
        }
        EXPECT_EQ(violationOf(model), "");
    });
}

TEST(Conformance, AnAbandonedChangeLeavesNoTrace) {
    forEachProperty("rollback", changeableKinds, [](ModelElement const& element, PropertyRow const& row) {
        Model const model = element.getModel();
        std::vector<ModelElement> const first = prepareChange(model, row, 0);
        std::vector<ModelElement> const second = prepareChange(model, row, 1);
        auto const abandoned = [&](auto change) {
            std::string const before = dump(model);
            {
                Transaction const level = model.beginTransaction();
                change();
                EXPECT_EQ(violationOf(model), "");
                EXPECT_NE(dump(model), before);
            }
            EXPECT_EQ(firstDifference(before, dump(model)), "");
            EXPECT_EQ(violationOf(model), "");
        };
        abandoned([&] { applyChange(element, row, first); });
        abandoned([&] { applyChange(element, row, prepareChange(model, row)); });
        applyChange(element, row, first);
        abandoned([&] {
            applyChange(element, row, second, 1);
            Transaction inner = model.beginTransaction();
            if (row.kind != Attribute && row.kind != Reference && row.kind != ContainerEnd) {
                AbstractOwnedCollection& collection = Core::collection(*element.get(), row);
                if (collection.asReferences() != nullptr)
                    collection.asReferences()->genericClear();
                else
                    static_cast<AbstractPrimitiveCollection&>(collection).clear();
            }
            inner.commit();
        });
        abandoned([&] { element.destroy(); });
    });
}

TEST(Conformance, AChangeIsReportedWithTheOldValue) {
    std::set<PropertyKind> kinds = storedKinds;
    forEachProperty("change record", kinds, [](ModelElement const& element, PropertyRow const& row) {
        Model const model = element.getModel();
        std::vector<ModelElement> const first = prepareChange(model, row, 0);
        std::vector<ModelElement> const second = prepareChange(model, row, 1);
        applyChange(element, row, first);
        bool const many = row.kind == ManyAttribute || row.kind == ManyReference || row.kind == Map;
        std::vector<Value> const before = many ? contents(Core::collection(*element.get(), row))
                                               : std::vector<Value>{element.getPropertyValue(property(row))};
        std::size_t reports = 0;
        Subscription const subscription = model.onCommit([&](CommitNotice const& notice) {
            for (ElementChange const& change : notice.changed) {
                if (change.element() != element) continue;
                ++reports;
                EXPECT_EQ(change.properties(), std::vector<meta::Property>{property(row)});
                Value const old = change.oldValue(property(row));
                EXPECT_EQ(many ? contents(*old.collection()) : std::vector<Value>{old}, before);
            }
        });
        Transaction level = model.beginTransaction();
        applyChange(element, row, second, 1);
        level.commit();
        EXPECT_EQ(reports, 1u);
    });
}

TEST(Conformance, BuildersTakeWhatElementsTake) {
    forEachProperty("builders", storedKinds, [](ModelElement const& element, PropertyRow const& row) {
        Model const model = element.getModel();
        std::unique_ptr<Builder> const builder = meta::instantiateBuilder(element.getMetaClass(), model);
        meta::Property const p = property(row);
        if (row.kind == ContainerEnd) {
            Value const owner = Value::createElementValue(p, make(model, *row.target));
            EXPECT_EQ(failureOf([&] { builder->setOrAdd(p, owner); }), "NoSuchProperty");
            EXPECT_FALSE(builder->isGiven(row.index));
            return;
        }
        ModelElement plain;
        if (row.contained()) {
            ClassTable const& part = concrete(*row.target);
            std::unique_ptr<Builder> sub = meta::instantiateBuilder(part.metaClass(), model);
            if (row.kind == Map)
                sub->setOrAdd(property(*row.related),
                              Value::createPrimitiveValue(property(*row.related), std::u16string(u"/p")));
            builder->setOrAdd(p, sub);
            EXPECT_EQ(sub, nullptr);
        } else if (row.refersToElements()) {
            plain = make(model, *row.target);
            builder->setOrAdd(p, Value::createElementValue(p, plain));
        } else {
            builder->setOrAdd(p, sampleValue(row));
        }
        EXPECT_TRUE(builder->isGiven(row.index));
        ModelElement const made = builder->createElement();
        EXPECT_TRUE(made.hasPropertyValue(p));
        if (row.kind == Attribute) {
            EXPECT_EQ(made.getPropertyValue(p), sampleValue(row));
        } else if (row.kind == ManyAttribute) {
            EXPECT_EQ(contents(Core::collection(*made.get(), row)), std::vector<Value>{sampleValue(row)});
        } else {
            ModelElement const member =
                row.kind == Reference
                    ? target(made, row)
                    : Core::collection(*made.get(), row).asReferences()->getAllValues().at(0);
            if (row.contained())
                EXPECT_EQ(member.container(), made);
            else
                EXPECT_EQ(member, plain);
        }
        EXPECT_EQ(violationOf(model), "");
    });
}

TEST(Conformance, ComputedPropertiesAreReadOnly) {
    std::set<std::string> refused;
    forEachProperty("computed", {View, Derived}, [&](ModelElement const& element, PropertyRow const& row) {
        std::string text;
        try {
            element.setPropertyValue(property(row), Value());
        } catch (std::exception const& failure) {
            text = failure.what();
        }
        EXPECT_NE(text.find("CannotSetReadOnlyProperty"), std::string::npos) << text;
        EXPECT_NE(text.find("'" + nameOf(row) + "'"), std::string::npos) << text;
        refused.insert(nameOf(row));
        std::unique_ptr<Builder> const builder =
            meta::instantiateBuilder(element.getMetaClass(), element.getModel());
        EXPECT_EQ(failureOf([&] { builder->setOrAdd(property(row), Value()); }), "NoSuchProperty");
    });
    EXPECT_EQ(refused.size(), 19u);
}

TEST(Conformance, BothTextFormsKeepEachProperty) {
    using zelkor::ast::io::IoFormat;
    std::map<std::string, std::size_t> sizes;
    forEachProperty("text forms", changeableKinds, [&](ModelElement const& element, PropertyRow const& row) {
        zelkor::ast::Ast ast(element.getModel());
        std::vector<ModelElement> const others = prepareChange(ast.getModel(), row);
        applyChange(element, row, others);
        std::string const before = dump(ast.getModel());
        for (auto const& [format, name] :
             {std::pair(IoFormat::json, "JSON"), std::pair(IoFormat::xml, "XML")}) {
            std::string const text = zelkor::ast::io::serializeToUTF8String(ast, format);
            std::string failure;
            try {
                zelkor::ast::Ast again = zelkor::ast::io::deserializeFromUTF8String(text, format);
                EXPECT_EQ(firstDifference(before, dump(again.getModel())), "") << name << '\n' << text;
                EXPECT_EQ(violationOf(again.getModel()), "") << name;
                EXPECT_EQ(zelkor::ast::io::serializeToUTF8String(again, format), text) << name;
            } catch (std::exception const& thrown) {
                failure = thrown.what();
            }
            EXPECT_EQ(failure, "") << name << '\n' << text;
            sizes[name] += text.size();
        }
    });
    std::cout << "bytes written: JSON " << sizes["JSON"] << ", XML " << sizes["XML"] << '\n';
}

TEST(Conformance, AFreshElementIsWrittenAsClassAndIdentity) {
    using zelkor::ast::io::IoFormat;
    for (ClassTable const* table : classes()) {
        if (table->isAbstract) continue;
        zelkor::ast::Ast ast(newModel());
        ModelElement const element = make(ast.getModel(), *table);
        std::string const name = table->shortName;
        std::string const uuid = element.get()->identifier();
        std::string const json = zelkor::ast::io::serializeToUTF8String(ast, IoFormat::json);
        EXPECT_NE(json.find("{\"class\":\"" + name + "\",\"uuid\":\"" + uuid + "\"}"), std::string::npos)
            << json;
        std::string const xml = zelkor::ast::io::serializeToUTF8String(ast, IoFormat::xml);
        EXPECT_NE(xml.find("<" + name + " uuid=\"" + uuid + "\"/>"), std::string::npos) << xml;
    }
}

TEST(Conformance, WrongPropertiesAndTypesChangeNothing) {
    forEachProperty("refusals", changeableKinds, [](ModelElement const& element, PropertyRow const& row) {
        Model const model = element.getModel();
        meta::Property const p = property(row);
        // The class of the table of macros has no property that macros lack, so one of the two is a stranger.
        PropertyRow const& macro = zelkor::ast::Macro::Impl::rows[0];
        PropertyRow const& scope = zelkor::ast::Scope::Impl::rows[0];
        PropertyRow const& foreign = element.get()->classTable().conformsTo(*macro.owner) ? scope : macro;
        std::string const before = dump(model);
        EXPECT_EQ(failureOf([&] { static_cast<void>(element.getPropertyValue(property(foreign))); }),
                  "NoSuchProperty");
        EXPECT_EQ(failureOf([&] { static_cast<void>(element.hasPropertyValue(property(foreign))); }),
                  "NoSuchProperty");
        EXPECT_EQ(failureOf([&] { element.setPropertyValue(property(foreign), Value()); }), "NoSuchProperty");
        if (row.kind != View) {
            Value const wrong = row.valueKind == schema::ValueKind::Real
                                    ? sampleValue(macro)
                                    : Value::own<double>(meta::requireType("Real"), ValueFlags::One, 1.5);
            EXPECT_EQ(failureOf([&] { element.setPropertyValue(p, wrong); }), "CannotCastIncompatibleTypes");
            std::unique_ptr<Builder> const builder = meta::instantiateBuilder(element.getMetaClass(), model);
            if (row.kind != ContainerEnd && !row.contained()) {
                EXPECT_EQ(failureOf([&] { builder->setOrAdd(p, wrong); }), "CannotCastIncompatibleTypes");
                EXPECT_FALSE(builder->isGiven(row.index));
            }
        }
        EXPECT_EQ(dump(model), before);
    });
}

TEST(Conformance, PlaceholdersAreReadButNotChanged) {
    forEachProperty("placeholders", changeableKinds, [](ModelElement const& element, PropertyRow const& row) {
        Model const model = element.getModel();
        meta::Property const p = property(row);
        ModelElement const proxy = model.createProxy(element.getMetaClass(), {u"", u"no identity", nullptr});
        std::vector<ModelElement> const others = prepareChange(model, row);
        EXPECT_TRUE(proxy.isProxy());
        EXPECT_EQ(failureOf([&] {
                      if (row.kind == ManyAttribute)
                          proxy.setPropertyValue(p, element.getPropertyValue(p));
                      else
                          applyChange(proxy, row, others);
                  }),
                  "CannotModifyProxy");
        EXPECT_EQ(failureOf([&] { proxy.destroy(); }), "CannotModifyProxy");
        EXPECT_EQ(violationOf(model), "");
        bool const hands = row.kind == ManyReference || row.kind == Map || row.kind == View;
        EXPECT_EQ(failureOf([&] { static_cast<void>(proxy.getPropertyValue(p)); }),
                  hands ? "CannotModifyProxy" : "");
        EXPECT_EQ(failureOf([&] { static_cast<void>(proxy.hasPropertyValue(p)); }), "");
        if (row.kind == Attribute) { // an equal value as well
            EXPECT_EQ(failureOf([&] { proxy.setPropertyValue(p, proxy.getPropertyValue(p)); }),
                      "CannotModifyProxy");
        }
    });
}

TEST(Conformance, IndicesNamesAndIdentities) {
    auto& package = zelkor::ast::MetaPackageZelkor_ast::getInstance();
    EXPECT_EQ(package.objects().size(), 531u);
    std::set<std::string> identities;
    std::size_t types = 0;
    std::size_t indexed = 0;
    std::size_t withoutBody = 0;
    for (meta::NamedElement const& object : package.objects()) {
        EXPECT_TRUE(identities.insert(object.get()->identifier()).second);
        types += meta::Type::cast(object) != nullptr;
    }
    EXPECT_EQ(types, 87u);
    EXPECT_EQ(classes().size(), 72u);
    std::size_t builders = 0;
    auto const& registry = meta::MetaRegistry::getInstance();
    EXPECT_EQ(registry.getType(u"Model"), meta::Type(Model::metaClass()));
    EXPECT_EQ(registry.getType(u"brant.zero.meta.Class"), meta::Type(meta::Class::metaClass()));
    EXPECT_FALSE(registry.getType(u"zelkor.ast.Nothing"));
    for (ClassTable const* table : classes()) {
        SCOPED_TRACE(table->shortName);
        meta::Class const cls = table->metaClass();
        EXPECT_EQ(registry.getType(meta::qualifiedName(cls)), cls);
        EXPECT_EQ(registry.getTypeByScriptName(table->scriptName), cls);
        EXPECT_EQ(registry.names(cls)->native, table->nativeName);
        EXPECT_EQ(cls.get()->identifier(), table->identity);
        EXPECT_EQ(meta::instantiateBuilder(cls, newModel()) == nullptr, table->isAbstract);
        builders += !table->isAbstract;
        indexed += table->count - table->base->count;
        for (std::uint16_t i = 0; i < table->rowCount; ++i)
            withoutBody += table->rows[i].kind == Derived && table->rows[i].derived == nullptr;
        for (std::uint16_t i = 0; i < table->operationCount; ++i)
            withoutBody += table->operations[i].callable && table->operations[i].invoker == nullptr;
        if (table->isAbstract) continue;
        Model const model = newModel();
        ModelElement const element = make(model, *table);
        for (std::size_t i = 0; i < table->count + 2u; ++i) {
            meta::Property const found = element->getPropertyByIndex(i);
            EXPECT_EQ(static_cast<bool>(found), i > 0 && i < table->count);
            if (found) {
                EXPECT_EQ(found.getPropertyIndex(), static_cast<long>(i));
            }
        }
    }
    EXPECT_EQ(builders, 69u);
    EXPECT_EQ(indexed, 220u);
    EXPECT_EQ(withoutBody, 0u) << "members whose body is still to come";
}
