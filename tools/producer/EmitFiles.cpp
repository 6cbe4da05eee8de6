// The project, its files and its units.
#include "Emitter.hpp"
#include "EmitterEnums.hpp"

#include <array>

namespace zelkor::producer {

namespace za = zelkor::ast;

namespace {

constexpr std::array<za::types::IntegerKind, 16> integerKinds{
    za::types::IntegerKind::Char,
    za::types::IntegerKind::SignedChar,
    za::types::IntegerKind::UnsignedChar,
    za::types::IntegerKind::SignedShort,
    za::types::IntegerKind::UnsignedShort,
    za::types::IntegerKind::SignedInt,
    za::types::IntegerKind::UnsignedInt,
    za::types::IntegerKind::SignedLong,
    za::types::IntegerKind::UnsignedLong,
    za::types::IntegerKind::SignedLongLong,
    za::types::IntegerKind::UnsignedLongLong,
    za::types::IntegerKind::SignedInt128,
    za::types::IntegerKind::UnsignedInt128,
    za::types::IntegerKind::Wchar,
    za::types::IntegerKind::Char16,
    za::types::IntegerKind::Char32,
};

constexpr std::array<za::source::LanguageKind, 10> languages{
    za::source::LanguageKind::C,     za::source::LanguageKind::C89,   za::source::LanguageKind::C99,
    za::source::LanguageKind::C11,   za::source::LanguageKind::C17,   za::source::LanguageKind::CXX,
    za::source::LanguageKind::CXX03, za::source::LanguageKind::CXX11, za::source::LanguageKind::CXX14,
    za::source::LanguageKind::CXX17,
};

} // namespace

za::types::IntegerKind toModel(IntegerKind kind) {
    return integerKinds[static_cast<std::size_t>(kind)];
}

void Emitter::describeProject() {
    TargetFacts const& target = facts_.target();
    project_.setIsLittleEndian(target.isLittleEndian);
    project_.setPlainCharsAreSigned(target.charIsSigned);
    project_.setCharNumBits(target.charBits);
    project_.setShortNumBits(target.shortBits);
    project_.setIntNumBits(target.intBits);
    project_.setLongNumBits(target.longBits);
    project_.setLongLongNumBits(target.longLongBits);
    project_.setFloatNumBits(target.floatBits);
    project_.setDoubleNumBits(target.doubleBits);
    project_.setLongDoubleNumBits(target.longDoubleBits);
    project_.setPointerNumBits(target.pointerBits);
    project_.setPtrDiffTypeKind(toModel(target.ptrDiffType));
    project_.setSizeTypeKind(toModel(target.sizeType));
    project_.setSSizeTypeKind(toModel(target.signedSizeType));
    project_.setWcharTypeKind(toModel(target.wcharType));
}

void Emitter::emitComments(std::span<FileFact const> files) {
    for (FileFact const& fact : files) {
        if (elements_.contains(fact.id)) continue;
        za::source::SourceFile const file = create<za::source::SourceFile>(fact.id);
        file.setPath(toModelText(fact.path));
        elements_.emplace(fact.id, file);
        project_.getFilesMutable().insert(file);
        std::size_t ordinal = 0;
        for (CommentFact const& comment : fact.comments)
            emitComment(file, comment, makeId(fact.id, "comment", ordinal++));
    }
}

void Emitter::emitComment(za::source::SourceFile const& file, CommentFact const& fact, Id const& id) {
    za::Comment const comment = create<za::Comment>(id);
    comment.setText(toModelText(fact.text));
    comment.setPosition(range(fact.range, makeId(id, "range")));
    file.getCommentsMutable().add(comment);
}

void Emitter::describeFile(FileFact const& fact) {
    auto const file = find<za::source::SourceFile>(fact.id);
    file.setWrittenName(toModelText(fact.writtenName));
    file.setIsInclude(fact.isInclude);
    file.setIsIncludedBySystemIncludeSyntax(fact.isSystemSyntax);
    file.setIsIncludedByPreinclude(fact.isPreinclude);
    file.setIsIncludedFromSystemIncludeDir(fact.isFromSystemDirectory);
    file.setIsTopLevelFile(fact.isTopLevel);
    for (IncludeFact const& include : fact.includes) {
        file.getIncludedFilesMutable().add(find<za::source::SourceFile>(include.file));
        file.getIncludedFileWrittenNamesMutable().push_back(toModelText(include.writtenName));
    }
}

void Emitter::emitUnit(MergedUnit const& fact, std::size_t number) {
    std::size_t repetition = 0;
    for (std::size_t i = 0; i < number; ++i)
        repetition += facts_.units()[i].file == fact.file ? 1 : 0;
    auto const unit =
        create<za::source::CompilationUnit>(makeId(makeId("unit", fact.file), "repetition", repetition));
    unit.setLanguage(languages[static_cast<std::size_t>(fact.language)]);
    for (Id const& id : fact.files)
        unit.getFilesMutable().add(find<za::source::SourceFile>(id));
    for (MacroFact const& macro : fact.macros)
        emitMacro(unit, macro);
    project_.getCompilationsMutable().add(unit);
    units_.push_back(unit);
}

void Emitter::emitMacro(za::source::CompilationUnit const& unit, MacroFact const& fact) {
    za::Macro const macro = create<za::Macro>(fact.id);
    elements_.emplace(fact.id, macro);
    macro.setName(toModelText(fact.name));
    macro.setText(toModelText(fact.text));
    macro.setIsUndef(fact.isUndef);
    macro.setIsCmdDef(fact.isCommandLine);
    macro.setIsPreDef(fact.isPredefined);
    macro.setIsReferenced(fact.isReferenced);
    if (fact.position) macro.setDefPos(position(*fact.position, makeId(fact.id, "definition")));
    unit.getMacrosMutable().add(macro);
}

za::source::SourcePosition Emitter::position(Position const& fact, Id const& id) {
    auto const made = create<za::source::SourcePosition>(id);
    made.setLine(fact.line);
    made.setCol(fact.column);
    made.setFile(find<za::source::SourceFile>(fact.file));
    return made;
}

za::source::SourceRange Emitter::range(Range const& fact, Id const& id) {
    auto const made = create<za::source::SourceRange>(id);
    made.setStart(position(fact.start, makeId(id, "start")));
    made.setEnd(position(fact.end, makeId(id, "end")));
    return made;
}

} // namespace zelkor::producer
