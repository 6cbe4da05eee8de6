#include "FactsSupport.hpp"

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace zelkor::producer::test {

namespace fs = std::filesystem;

fs::path fixtures() {
    return ZELKOR_FIXTURES;
}

TemporaryDirectory::TemporaryDirectory() {
    std::string pattern = (fs::temp_directory_path() / "zelkor-test-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("no temporary directory");
    path_ = pattern;
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

fs::path TemporaryDirectory::write(std::string const& name, std::string_view text) const {
    fs::path const file = path_ / name;
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
    return file;
}

void WrittenProject::add(std::string const& file, std::string_view text,
                         std::vector<std::string> const& options) {
    directory.write(file, text);
    if (file.find(".h") == std::string::npos) facts.add(parse(file, options, directory.path()));
}

UnitFacts parse(std::string const& file, std::vector<std::string> const& options, fs::path const& directory) {
    bool const isC = fs::path(file).extension() == ".c";
    CompileCommand command;
    command.directory = directory.string();
    command.file = (directory / file).string();
    command.arguments = {isC ? "/usr/bin/cc" : "/usr/bin/c++", isC ? "-std=c11" : "-std=c++17"};
    command.arguments.insert(command.arguments.end(), options.begin(), options.end());
    command.arguments.insert(command.arguments.end(), {"-c", file, "-o", "out.o"});
    return parseUnit(command, {findResourceDirectory(""), {}}, ProjectPaths(directory.string()));
}

namespace {

Entity const* entityOf(UnitFacts const& facts, Id const& id) {
    auto const found = std::find_if(facts.entities.begin(), facts.entities.end(),
                                    [&](Entity const& entity) { return entity.id == id; });
    return found == facts.entities.end() ? nullptr : &*found;
}

std::string parameterText(UnitFacts const& facts, Id const& id) {
    for (Entity const& entity : facts.entities) {
        TemplateFacts const* const symbol = entity.as<TemplateFacts>();
        for (TemplateParameterFact const& parameter :
             symbol ? symbol->parameters : std::vector<TemplateParameterFact>{}) {
            if (parameter.id == id) return "param " + parameter.name;
        }
    }
    return "?";
}

std::string qualifierText(TypeFact const& type) {
    std::string text;
    if (type.isConst) text += "const";
    if (type.isVolatile) text += "volatile";
    if (type.isRestrict) text += "restrict";
    return text;
}

std::string extentText(TypeFact const& type) {
    std::string text;
    for (std::int64_t const extent : type.extents)
        text += '[' + std::to_string(extent) + ']';
    return text;
}

} // namespace

Entity const* findEntity(UnitFacts const& facts, EntityKind kind, std::string_view name,
                         std::string_view owner) {
    for (Entity const& entity : facts.entities) {
        if (entity.kind != kind || entity.name != name) continue;
        Entity const* const around = entityOf(facts, entity.owner);
        if (owner == "*" || owner == (around ? around->name : std::string())) return &entity;
    }
    return nullptr;
}

std::string typeText(UnitFacts const& facts, Id const& id) {
    static constexpr char const* integers[] = {"char",    "schar", "uchar",  "short", "ushort", "int",
                                               "uint",    "long",  "ulong",  "llong", "ullong", "int128",
                                               "uint128", "wchar", "char16", "char32"};
    static constexpr char const* floats[] = {"half", "float", "float128", "double", "ldouble"};
    if (id.is_nil()) return "none";
    if (Entity const* const entity = entityOf(facts, id)) return entity->name;
    auto const found = std::find_if(facts.types.begin(), facts.types.end(),
                                    [&](TypeFact const& type) { return type.id == id; });
    if (found == facts.types.end()) return parameterText(facts, id);
    TypeFact const& type = *found;
    std::string const inner = '(' + typeText(facts, type.base) + ')';
    switch (type.kind) {
    case TypeKind::Void:
        return "void";
    case TypeKind::Bool:
        return "bool";
    case TypeKind::NullPtr:
        return "nullptr";
    case TypeKind::Opaque:
        return "opaque " + type.name;
    case TypeKind::Integer:
        return integers[static_cast<std::size_t>(type.integer)];
    case TypeKind::Float:
        return floats[static_cast<std::size_t>(type.floating)];
    case TypeKind::Pointer:
        return "pointer" + inner;
    case TypeKind::LValueReference:
        return "ref" + inner;
    case TypeKind::RValueReference:
        return "rref" + inner;
    case TypeKind::MemberPointer:
        return "memptr" + inner;
    case TypeKind::Array:
        return "array" + extentText(type) + inner;
    case TypeKind::Vector:
        return "vector" + extentText(type) + inner;
    case TypeKind::Qualified:
        return qualifierText(type) + inner;
    case TypeKind::Attribute:
        return type.attributes.at(0) + inner;
    case TypeKind::TypeOperator:
        return "decltype" + inner;
    case TypeKind::Function:
        break;
    }
    std::string text = "fn(";
    for (Id const& parameter : type.parameters)
        text += typeText(facts, parameter) + ',';
    return text + (type.isVariadic ? "...)" : ")") + "->" + typeText(facts, type.base);
}

std::string constantText(ConstantFact const& constant) {
    static constexpr char const* names[] = {"int",    "float",     "string",   "address", "aggregate",
                                            "member", "parameter", "run time", "repeat",  "designator"};
    bool const isAggregate = constant.kind == ConstantKind::Aggregate;
    std::string text = isAggregate ? "{" : names[static_cast<std::size_t>(constant.kind)];
    if (!constant.name.empty()) text += " " + constant.name;
    if (!constant.value.empty()) text += " " + constant.value;
    for (ConstantFact const& element : constant.elements) {
        text += (text.back() == '{' ? "" : ", ") + constantText(element);
    }
    return isAggregate ? text + "}" : text;
}

namespace {

Flags functionWords(FunctionFacts const& facts) {
    static constexpr char const* special[] = {"",           "constructor",  "copy constructor", "destructor",
                                              "conversion", "udl operator", "operator"};
    return {{facts.optionalParameters > 0, std::to_string(facts.optionalParameters) + " optional"},
            {facts.isCompilerGenerated, "generated"},
            {facts.isInline, "inline"},
            {facts.isVariadic, "variadic"},
            {facts.isDeleted, "deleted"},
            {facts.isDefinedInFriend, "friend"},
            {facts.isVirtual, "virtual"},
            {facts.isAbstract, "abstract"},
            {facts.isFinal, "final"},
            {facts.isThisConst, "const"},
            {facts.special != SpecialFunction::None, special[static_cast<std::size_t>(facts.special)]}};
}

Flags variableWords(VariableFacts const& facts) {
    return {
        {facts.bits.has_value(), "bits " + std::to_string(facts.bits.value_or(0))},
        {facts.isMutable, "mutable"},
        {facts.initialiser.has_value(), "= " + (facts.initialiser ? constantText(*facts.initialiser) : "")}};
}

Flags recordWords(UnitFacts const& facts, RecordFacts const& record) {
    static constexpr char const* access[] = {"", "public ", "protected ", "private "};
    Flags words;
    for (BaseFact const& base : record.bases)
        words.emplace_back(true, std::string(": ") + (base.isVirtual ? "virtual " : "") +
                                     access[static_cast<std::size_t>(base.access)] +
                                     typeText(facts, base.type));
    Flags const flags = {{record.isFinal, "final"},
                         {record.isAbstract, "abstract"},
                         {record.isEmpty, "empty"},
                         {record.needsConstructor, "needs constructor"},
                         {record.needsCopyConstructor, "needs copy constructor"}};
    words.insert(words.end(), flags.begin(), flags.end());
    return words;
}

} // namespace

std::string factText(UnitFacts const& facts, Entity const& entity) {
    static constexpr char const* storages[] = {"", "extern", "static", "auto", "register"};
    static constexpr char const* linkages[] = {"", "internal", "C", "C++"};
    static constexpr char const* accesses[] = {"", "public", "protected", "private"};
    Flags words = {{!entity.type.is_nil(), typeText(facts, entity.type)},
                   {entity.storage != StorageClass::None, storages[static_cast<std::size_t>(entity.storage)]},
                   {entity.linkage != Linkage::None, linkages[static_cast<std::size_t>(entity.linkage)]},
                   {entity.access != Access::None, accesses[static_cast<std::size_t>(entity.access)]}};
    Flags more;
    if (FunctionFacts const* const function = entity.as<FunctionFacts>()) more = functionWords(*function);
    if (VariableFacts const* const variable = entity.as<VariableFacts>()) more = variableWords(*variable);
    if (RecordFacts const* const record = entity.as<RecordFacts>()) {
        more = recordWords(facts, *record);
        more.emplace_back(!entity.isDefined, "not defined");
    }
    words.insert(words.end(), more.begin(), more.end());
    return wordsOf(words);
}

std::string wordsOf(Flags const& flags) {
    std::string text;
    for (auto const& [isSet, word] : flags)
        if (isSet) text += (text.empty() ? "" : " ") + word;
    return text;
}

} // namespace zelkor::producer::test
