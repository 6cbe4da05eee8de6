// Template arguments: of aggregates and functions, of alias templates, and those that are only written.
#include "DeclarationReader.hpp"
#include "MangledNames.hpp"

#include <boost/uuid/uuid_io.hpp>

#include <algorithm>
#include <map>

namespace zelkor::producer {

namespace {

constexpr unsigned deepestMatch = 32;

bool isBlank(std::string_view text, std::size_t at) {
    return at < text.size() && text[at] == ' ';
}

std::string trimmed(std::string_view text) {
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return std::string(text);
}

// The arguments in the front end's text of a type that ends in a list of them. It sets blanks around
// operators and none in front of brackets, so that comparisons and shifts are told from these.
std::vector<std::string> writtenArguments(std::string_view text) {
    std::vector<std::string> arguments;
    int depth = 0;
    std::size_t start = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        char const c = text[at];
        bool const isOperator =
            (c == '<' || c == '>') && at > 0 && (isBlank(text, at - 1) || text[at - 1] == '-');
        if (isOperator) {
            while (at + 1 < text.size() && !isBlank(text, at + 1))
                ++at;
        } else if (c == '\'' || c == '"') {
            for (++at; at < text.size() && text[at] != c; ++at)
                at += text[at] == '\\' ? 1 : 0;
        } else if (c == '<' || c == '(' || c == '[' || c == '{') {
            if (depth++ > 0 || c != '<') continue;
            arguments.clear();
            start = at + 1;
        } else if (c == '>' || c == ')' || c == ']' || c == '}') {
            if (--depth == 0 && c == '>') arguments.push_back(trimmed(text.substr(start, at - start)));
        } else if (c == ',' && depth == 1) {
            arguments.push_back(trimmed(text.substr(start, at - start)));
            start = at + 1;
        }
    }
    if (!text.ends_with('>')) arguments.clear();
    return arguments;
}

// Digits with what may stand around them, or one of the words for truth.
std::optional<std::string> writtenNumber(std::string_view text) {
    if (text == "true") return "1";
    if (text == "false") return "0";
    while (!text.empty() && std::string_view("uUlL").find(text.back()) != std::string_view::npos)
        text.remove_suffix(1);
    std::string_view digits = text;
    if (digits.starts_with('-')) digits.remove_prefix(1);
    bool const isNumber = !digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos;
    return isNumber ? std::optional(std::string(text)) : std::nullopt;
}

// Whether it says which type, value or template it is; a pack only says where it begins.
bool isKnown(TemplateArgumentFact const& argument) {
    switch (argument.kind) {
    case ArgumentKind::Type:
        return !argument.type.is_nil();
    case ArgumentKind::NonType:
        return argument.value || !argument.parameter.is_nil();
    default:
        return argument.kind != ArgumentKind::PackStart;
    }
}

std::string canonicalText(CXType type) {
    return toText(clang_getTypeSpelling(clang_getCanonicalType(type)));
}

// Types that parameters of a template stand for, found where its own type has them and that of the instance
// has something else.
class Deduction {
  public:
    void match(CXType pattern, CXType instance, unsigned depth = 0) {
        if (depth > deepestMatch || pattern.kind == CXType_Invalid || instance.kind == CXType_Invalid) return;
        pattern = clang_getCanonicalType(pattern);
        instance = clang_getCanonicalType(instance);
        if (clang_isConstQualifiedType(pattern)) {
            pattern = clang_getUnqualifiedType(pattern);
            instance = clang_getUnqualifiedType(instance);
        }
        if (pattern.kind == CXType_Unexposed) {
            std::string const text = toText(clang_getTypeSpelling(pattern));
            if (text.starts_with("type-parameter-")) found_.try_emplace(text, instance);
        }
        match(clang_getPointeeType(pattern), clang_getPointeeType(instance), depth + 1);
        match(clang_getResultType(pattern), clang_getResultType(instance), depth + 1);
        for (int i = 0, count = clang_getNumArgTypes(pattern); i < count; ++i)
            match(clang_getArgType(pattern, static_cast<unsigned>(i)),
                  clang_getArgType(instance, static_cast<unsigned>(i)), depth + 1);
        for (int i = 0, count = clang_Type_getNumTemplateArguments(pattern); i < count; ++i)
            match(clang_Type_getTemplateArgumentAsType(pattern, static_cast<unsigned>(i)),
                  clang_Type_getTemplateArgumentAsType(instance, static_cast<unsigned>(i)), depth + 1);
    }

    CXType typeOf(CXCursor parameter) const {
        auto const found = found_.find(canonicalText(clang_getCursorType(parameter)));
        return found == found_.end() ? CXType{CXType_Invalid, {}} : found->second;
    }

  private:
    std::map<std::string, CXType> found_;
};

} // namespace

std::vector<TemplateArgumentFact> DeclarationReader::argumentsOf(CXCursor cursor) {
    if (isRecordCursor(clang_getCursorKind(cursor)))
        return argumentsOfType(clang_getCursorType(cursor), cursor, cursor);
    return clang_Cursor_getNumTemplateArguments(cursor) < 0 ? argumentsOfMember(cursor)
                                                            : argumentsOfFunction(cursor);
}

TemplateArgumentFact DeclarationReader::valueArgument(CXCursor cursor, unsigned index) {
    TemplateArgumentFact argument;
    CXTemplateArgumentKind const kind = clang_Cursor_getTemplateArgumentKind(cursor, index);
    if (kind == CXTemplateArgumentKind_Template || kind == CXTemplateArgumentKind_TemplateExpansion) {
        argument.kind = ArgumentKind::TemplateTemplate;
        return argument;
    }
    argument.kind = ArgumentKind::NonType;
    if (kind != CXTemplateArgumentKind_Integral) return argument;
    ConstantFact constant;
    constant.kind = ConstantKind::Integer;
    CXCursor const pattern = clang_getSpecializedCursorTemplate(cursor);
    std::vector<CXCursor> const parameters = ownParameterCursors(pattern);
    CXType const type =
        index < parameters.size() ? clang_getCursorType(parameters[index]) : clang_getCursorType(CXCursor{});
    CXTypeKind const typeKind = clang_getCanonicalType(type).kind;
    bool const isUnsigned = typeKind == CXType_ULong || typeKind == CXType_ULongLong;
    constant.value = isUnsigned ? std::to_string(clang_Cursor_getTemplateArgumentUnsignedValue(cursor, index))
                                : std::to_string(clang_Cursor_getTemplateArgumentValue(cursor, index));
    // A dependent type of a parameter says nothing about this argument.
    if (typeKind != CXType_Unexposed && typeKind != CXType_Auto) constant.type = types_.read(type, pattern);
    argument.value = std::move(constant);
    return argument;
}

// Of values that are only written the front end has the text: a parameter around it, a number, or an
// expression.
TemplateArgumentFact DeclarationReader::writtenArgument(std::string const& text, CXCursor context) {
    TemplateArgumentFact argument;
    argument.kind = ArgumentKind::NonType;
    TemplateParameterFact const* const parameter = parameterNamed(text, context);
    if (parameter && parameter->kind == TemplateParameterKind::NonType) {
        argument.parameter = parameter->id;
        return argument;
    }
    ConstantFact constant;
    if (std::optional<std::string> const number = writtenNumber(text)) {
        constant.kind = ConstantKind::Integer;
        constant.value = *number;
    } else {
        if (mentionsParameter(text, context)) constant.kind = ConstantKind::TemplateParam;
        constant.name = sources_.paths().withoutRoot(text);
    }
    argument.value = std::move(constant);
    return argument;
}

TemplateParameterFact const* DeclarationReader::parameterNamed(std::string_view name, CXCursor context) {
    for (CXCursor cursor = context; !clang_isInvalid(clang_getCursorKind(cursor));
         cursor = clang_getCursorSemanticParent(cursor)) {
        CXCursorKind const kind = clang_getCursorKind(cursor);
        if (kind == CXCursor_TranslationUnit) break;
        if (!isTemplateCursor(kind)) continue;
        for (TemplateParameterFact const& parameter : knownParameters(cursor))
            if (parameter.name == name) return &parameter;
    }
    return nullptr;
}

bool DeclarationReader::mentionsParameter(std::string_view text, CXCursor context) {
    for (std::size_t at = 0; at < text.size(); ++at) {
        std::size_t const start = at;
        while (at < text.size() && isWordByte(text[at]))
            ++at;
        if (at > start && parameterNamed(text.substr(start, at - start), context)) return true;
    }
    return false;
}

// A type lists the elements of packs one by one, its declaration lists each pack as one argument.
std::vector<TemplateArgumentFact> DeclarationReader::argumentsOfType(CXType type, CXCursor cursor,
                                                                     CXCursor context) {
    std::vector<TemplateArgumentFact> arguments;
    int const count = clang_Type_getNumTemplateArguments(type);
    int const declared = clang_Cursor_getNumTemplateArguments(cursor);
    std::vector<std::string> const written = writtenArguments(toText(clang_getTypeSpelling(type)));
    bool const isWritten = written.size() == static_cast<std::size_t>(std::max(count, 0));
    int pack = -1;
    for (int i = 0; i < declared && pack < 0; ++i) {
        auto const kind = clang_Cursor_getTemplateArgumentKind(cursor, static_cast<unsigned>(i));
        if (kind == CXTemplateArgumentKind_Pack) pack = i;
    }
    for (int i = 0; i < count; ++i) {
        TemplateArgumentFact argument;
        if (i == pack) {
            argument.kind = ArgumentKind::PackStart;
            arguments.push_back(argument);
        }
        unsigned const index = static_cast<unsigned>(i);
        CXType const typeArgument = clang_Type_getTemplateArgumentAsType(type, index);
        if (typeArgument.kind != CXType_Invalid) {
            argument.kind = ArgumentKind::Type;
            argument.type = types_.read(typeArgument, context);
        } else if (i < declared && (pack < 0 || i < pack)) {
            argument = valueArgument(cursor, index);
        } else {
            argument.kind = ArgumentKind::NonType;
        }
        bool const isUnknown = argument.kind == ArgumentKind::NonType && !argument.value;
        arguments.push_back(isUnknown && isWritten ? writtenArgument(written[index], context)
                                                   : std::move(argument));
    }
    if (pack >= count) arguments.push_back({ArgumentKind::PackStart, {}, {}, {}, {}});
    return arguments;
}

std::vector<TemplateArgumentFact> DeclarationReader::argumentsOfFunction(CXCursor cursor) {
    std::vector<TemplateArgumentFact> arguments;
    for (int i = 0, count = clang_Cursor_getNumTemplateArguments(cursor); i < count; ++i) {
        unsigned const index = static_cast<unsigned>(i);
        TemplateArgumentFact argument;
        switch (clang_Cursor_getTemplateArgumentKind(cursor, index)) {
        case CXTemplateArgumentKind_Type:
            argument.kind = ArgumentKind::Type;
            argument.type = types_.read(clang_Cursor_getTemplateArgumentType(cursor, index), cursor);
            break;
        case CXTemplateArgumentKind_Pack:
            argument.kind = ArgumentKind::PackStart;
            break;
        default:
            argument = valueArgument(cursor, index);
        }
        arguments.push_back(std::move(argument));
    }
    return arguments;
}

// The front end tells the arguments of functions outside classes only; those of members follow from their
// types or, where these do not show them, from their mangled names.
std::vector<TemplateArgumentFact> DeclarationReader::argumentsOfMember(CXCursor cursor) {
    CXCursor const pattern = clang_getSpecializedCursorTemplate(cursor);
    Deduction deduction;
    deduction.match(clang_getCursorType(pattern), clang_getCursorType(cursor));
    std::vector<TemplateArgumentFact> arguments;
    std::vector<CXCursor> const parameters = ownParameterCursors(pattern);
    for (CXCursor const& parameter : parameters) {
        TemplateArgumentFact argument;
        CXCursorKind const kind = clang_getCursorKind(parameter);
        if (declaresPack(sources_.text(clang_getCursorExtent(parameter)))) {
            argument.kind = ArgumentKind::PackStart;
        } else if (kind == CXCursor_TemplateTypeParameter) {
            argument.kind = ArgumentKind::Type;
            argument.type = types_.read(deduction.typeOf(parameter), cursor);
        } else {
            argument.kind = kind == CXCursor_NonTypeTemplateParameter ? ArgumentKind::NonType
                                                                      : ArgumentKind::TemplateTemplate;
        }
        arguments.push_back(std::move(argument));
    }
    if (!std::all_of(arguments.begin(), arguments.end(), isKnown))
        completeArguments(cursor, parameters, arguments);
    return arguments;
}

// Which elements belong to a pack follows from their number, unless there are several packs.
void DeclarationReader::completeArguments(CXCursor cursor, std::vector<CXCursor> const& parameters,
                                          std::vector<TemplateArgumentFact>& arguments) {
    std::vector<std::string> const texts = mangledArguments(cursor, nameOf(cursor));
    auto const packs =
        static_cast<std::size_t>(std::count_if(arguments.begin(), arguments.end(), [](auto const& argument) {
            return argument.kind == ArgumentKind::PackStart;
        }));
    std::size_t const single = arguments.size() - packs;
    if (packs > 1 || texts.size() < single || (packs == 0 && texts.size() > single)) return;
    std::vector<TemplateArgumentFact> complete;
    for (std::size_t i = 0, next = 0; i < arguments.size(); ++i) {
        bool const isPack = arguments[i].kind == ArgumentKind::PackStart;
        std::size_t const end = next + (isPack ? texts.size() - single : 1);
        bool const isDone = !isPack && isKnown(arguments[i]);
        if (isPack || isDone) complete.push_back(std::move(arguments[i]));
        for (; next < end; ++next)
            if (!isDone) complete.push_back(mangledArgument(texts[next], parameters[i], cursor));
    }
    arguments = std::move(complete);
}

TemplateArgumentFact DeclarationReader::mangledArgument(std::string const& text, CXCursor parameter,
                                                        CXCursor context) {
    TemplateArgumentFact argument;
    switch (clang_getCursorKind(parameter)) {
    case CXCursor_TemplateTypeParameter:
        argument.kind = ArgumentKind::Type;
        argument.type = types_.readMangled(text, context);
        return argument;
    case CXCursor_NonTypeTemplateParameter:
        break;
    default:
        argument.kind = ArgumentKind::TemplateTemplate;
        return argument;
    }
    // Numbers that are no plain ones stand behind a cast to their type.
    argument = writtenArgument(text.starts_with('(') ? text.substr(text.rfind(')') + 1) : text, context);
    CXType const type = clang_getCursorType(parameter);
    CXTypeKind const kind = clang_getCanonicalType(type).kind;
    bool const isNumber = argument.value && argument.value->kind == ConstantKind::Integer;
    if (isNumber && kind != CXType_Unexposed && kind != CXType_Auto)
        argument.value->type = types_.read(type, clang_getSpecializedCursorTemplate(context));
    return argument;
}

Id DeclarationReader::referSpecialisation(CXCursor templateCursor, CXType type, CXCursor context) {
    Id const templateId = refer(templateCursor);
    std::vector<TemplateArgumentFact> arguments = argumentsOfType(type, templateCursor, context);
    std::string key = boost::uuids::to_string(templateId);
    for (TemplateArgumentFact const& argument : arguments) {
        key += std::to_string(static_cast<int>(argument.kind)) + boost::uuids::to_string(argument.type) +
               boost::uuids::to_string(argument.parameter);
        if (argument.value) key += argument.value->value + argument.value->name;
    }
    // What is not known of values stands in the text.
    bool const isUnknown = std::any_of(arguments.begin(), arguments.end(), [](auto const& argument) {
        return argument.kind == ArgumentKind::NonType && !argument.value && argument.parameter.is_nil();
    });
    if (isUnknown) key += sources_.paths().withoutRoot(toText(clang_getTypeSpelling(type)));
    Id const id = makeId("specialisation", key);
    if (table_.contains(id)) return id;
    Entity& made = entities_.emplace_back();
    table_.emplace(id, &made);
    describeCommon(made, templateCursor);
    made.id = id;
    made.isDefined = false;
    made.comments.clear();
    made.templateOf = templateId;
    made.arguments = std::move(arguments);
    describePlace(made, templateCursor);
    made.detail = RecordFacts{};
    switch (patternKind(templateCursor)) {
    case CXCursor_StructDecl:
        made.kind = EntityKind::Struct;
        break;
    case CXCursor_UnionDecl:
        made.kind = EntityKind::Union;
        break;
    case CXCursor_TypeAliasDecl: {
        made.kind = EntityKind::Typedef;
        TypedefFacts facts;
        facts.isAlias = facts.isTemplateAlias = true;
        facts.isDependent = clang_Type_getSizeOf(type) == CXTypeLayoutError_Dependent;
        made.detail = facts;
        made.type = types_.read(clang_getCanonicalType(type), context);
        break;
    }
    default:
        made.kind = EntityKind::Class;
    }
    return id;
}

} // namespace zelkor::producer
