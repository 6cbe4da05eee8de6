// Change records as a tool can use them: made from an element, filled by index, written back.

#include "kernel/Stage.hpp"

#include "brant/zero/Primitive.hpp"
#include "brant/zero/Storage.hpp"
#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

using namespace testmodel;

namespace {

class StorageTest : public testing::Test, protected Stage {};

ReflectionPrivateTag const& plain = ReflectionPrivateTag::PUBLIC_ACCESS;

} // namespace

TEST_F(StorageTest, EveryIndexOfEveryClassHasABit) {
    std::size_t checked = 0;
    for (ClassTable const* table : classes()) {
        if (table->isAbstract) continue;
        SCOPED_TRACE(table->shortName);
        Model const model = newModel();
        ModelElement const element = make(model, *table);
        auto const storage = element->createStorage();
        auto const changes = element->createChanges();
        EXPECT_EQ(storage->count(), table->count);
        EXPECT_EQ(changes->count(), table->count - 1u);
        for (Changes* record : {static_cast<Changes*>(storage.get()), changes.get()}) {
            EXPECT_EQ(record->uuid(), element.uuid());
            EXPECT_EQ(record->getModel(), model);
            EXPECT_EQ(record->getMetaClass(), element.getMetaClass());
            EXPECT_GE(record->bits().size(), table->count);
            EXPECT_TRUE(record->bits().none());
        }
        checked += table->count;
    }
    EXPECT_GT(checked, 220u);
}

TEST_F(StorageTest, WhatWasCopiedIsOldValueAndCanBeWrittenBack) {
    std::size_t checked = 0;
    for (ClassTable const* table : classes()) {
        if (table->isAbstract) continue;
        for (std::size_t i = 1; i < table->count; ++i) {
            PropertyRow const& row = *table->stored[i];
            if (row.kind == PropertyKind::ContainerEnd || row.contained()) continue;
            SCOPED_TRACE(std::string(table->shortName) + " " + row.name);
            Model const model = newModel();
            ModelElement const element = make(model, *table);
            applyChange(element, row, prepareChange(model, row, 0), 0);
            std::string const before = dump(model);
            auto const storage = element->createStorage();
            meta::Property const property = Core::propertyOf(&row);
            element->copyValue(storage.get(), i);
            EXPECT_EQ(storage->getOldValue(property, plain).flags(), ValueFlags::Absent); // no bit yet
            storage->mark(i);
            std::vector<ModelElement> const others = prepareChange(model, row, 1);
            applyChange(element, row, others, 1);
            storage->revertUnchanged(element.get());
            EXPECT_TRUE(storage->changed(i));
            EXPECT_NE(storage->getOldValue(property, plain).flags(), ValueFlags::Absent);
            element->copyStateFromStorage(storage.get());
            for (ModelElement const& other : others)
                other.destroy();
            EXPECT_EQ(firstDifference(before, dump(model)), "");
            storage->revertUnchanged(element.get());
            bool const reports = row.many(); // contents of two and more are not compared
            EXPECT_EQ(storage->changed(i), reports);
            ++checked;
        }
    }
    EXPECT_GT(checked, 100u);
}

TEST_F(StorageTest, PlaceholdersInAMapAreNoContent) {
    project.getFilesMutable().add(
        placeholderFor<za::source::SourceFile>(model, ElementImpl::generateNewUuid()));
    auto const storage = project.get()->createStorage();
    meta::Property const files = za::Project::files().getProperty();
    project.get()->copyValue(storage.get(), Core::rowOf(files).index);
    storage->mark(Core::rowOf(files).index);
    Value const old = storage->getOldValue(files, plain);
    ASSERT_NE(old.collection(), nullptr);
    EXPECT_TRUE(old.collection()->asReferences()->getAllValuesAndProxies().empty());
}

TEST_F(StorageTest, APlaceholderThatWasResolvedCountsAsChanged) {
    function.setAssocTemplate(placeholderFor<za::Template>(model, assoc.uuid()));
    auto const storage = function.get()->createStorage();
    std::size_t const index = Core::rowOf(za::Function::assocTemplate().getProperty()).index;
    function.get()->copyValue(storage.get(), index);
    storage->mark(index);
    storage->revertUnchanged(function.get());
    EXPECT_FALSE(storage->changed(index));
    storage->mark(index);
    EXPECT_EQ(function.getAssocTemplate(), assoc);
    storage->revertUnchanged(function.get());
    EXPECT_TRUE(storage->changed(index));
}

TEST_F(StorageTest, WritingBackTellsNobody) {
    file.setPath(u"/a");
    project.getFilesMutable().insert(file);
    function.getParamsMutable().add(one);
    auto const path = Core::rowOf(za::source::SourceFile::path().getProperty()).index;
    auto const params = Core::rowOf(za::Function::params().getProperty()).index;
    auto const ofFile = file.get()->createStorage();
    auto const ofFunction = function.get()->createStorage();
    file.get()->copyValue(ofFile.get(), path);
    ofFile->mark(path);
    ofFunction->mark(params); // nothing was copied: it was empty
    file.setPath(u"/b");
    int commits = 0;
    Subscription const subscription = model.onCommit([&](CommitNotice const&) { ++commits; });
    file.get()->copyStateFromStorage(ofFile.get());
    function.get()->copyStateFromStorage(ofFunction.get());
    EXPECT_EQ(commits, 0);
    EXPECT_EQ(file.getPath(), u"/a");
    EXPECT_EQ(project.getFiles().keys(), std::vector<std::u16string>{u"/b"}); // no entry moves
    EXPECT_FALSE(function.hasParams());
    EXPECT_EQ(one.container(), function); // the other end keeps its link
    Core::field<std::u16string>(*file.get(), Core::rowOf(za::source::SourceFile::path().getProperty())) =
        u"/b";
    Core::restoreLink(*one.get(), nullptr, nullptr, 99);
    EXPECT_EQ(violationOf(model), "");
}

TEST_F(StorageTest, ContainerEndsShareOneFact) {
    function.setScope(scope);
    auto const storage = scope.get()->createStorage();
    PropertyRow const& parent = Core::rowOf(za::Scope::parent().getProperty());
    PropertyRow const& owningFun = Core::rowOf(za::Scope::owningFun().getProperty());
    scope.get()->copyValue(storage.get(), parent.index); // any of them copies the one fact
    for (std::size_t const i : {0u, unsigned(parent.index), unsigned(owningFun.index)})
        storage->mark(i);
    EXPECT_EQ(storage->oldContainer(), function);
    scope.setOwningFun({});
    EXPECT_EQ(storage->getOldValue(za::Scope::owningFun().getProperty(), plain).getValue<ModelElement>(),
              function);
    EXPECT_EQ(storage->getOldValue(za::Scope::parent().getProperty(), plain).getValue<ModelElement>(),
              nullptr);
    storage->revertUnchanged(scope.get());
    EXPECT_TRUE(storage->changed(owningFun.index));
    EXPECT_FALSE(storage->changed(parent.index)); // null before and after
    scope.setOwningFun(function);
    storage->revertUnchanged(scope.get());
    EXPECT_TRUE(storage->bits().none());
}

TEST_F(StorageTest, ANullReferenceIsTypedByItsProperty) {
    auto const storage = function.get()->createStorage();
    PropertyRow const& type = Core::rowOf(za::Function::type().getProperty());
    for (bool const set : {false, true}) {
        if (set) function.setType(za::types::VoidType::create(model));
        function.get()->copyValue(storage.get(), type.index);
        storage->mark(type.index);
        Value const old = storage->getOldValue(za::Function::type().getProperty(), plain);
        EXPECT_EQ(old.getType(), set ? meta::Type(za::types::VoidType::metaClass())
                                     : meta::Type(za::types::Type::metaClass()));
    }
}
