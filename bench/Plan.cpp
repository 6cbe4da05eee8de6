#include "Plan.hpp"

#include "Identity.hpp"

#include <array>
#include <cstring>
#include <string>

namespace zelkor::bench {

namespace {

constexpr std::array<std::string_view, 24> verbs{"read",  "write",  "open",  "close", "find",  "make",
                                                 "parse", "print",  "load",  "store", "merge", "split",
                                                 "check", "reset",  "count", "sort",  "visit", "apply",
                                                 "begin", "finish", "get",   "set",   "add",   "remove"};
constexpr std::array<std::string_view, 32> nouns{
    "Buffer", "Token",  "Node",   "Value",  "Index",  "Table",  "Entry",  "Record",
    "Stream", "Field",  "Symbol", "Scope",  "Type",   "Name",   "Range",  "Offset",
    "Header", "Block",  "Queue",  "Cursor", "Handle", "Reader", "Writer", "Option",
    "Filter", "Branch", "Signal", "Packet", "Frame",  "Shape",  "Key",    "Result"};
constexpr std::array<std::string_view, 16> shortNames{"count", "size",  "index", "flags", "data", "length",
                                                      "first", "last",  "from",  "to",    "name", "value",
                                                      "other", "limit", "depth", "state"};

struct IntegerRow {
    std::string_view name;
    unsigned numBits;
    bool isSigned;
    IntegerKind kind;
};
constexpr std::array<IntegerRow, 11> integerRows{
    {{"char", 8, true, IntegerKind::Char},
     {"signed char", 8, true, IntegerKind::SignedChar},
     {"unsigned char", 8, false, IntegerKind::UnsignedChar},
     {"short", 16, true, IntegerKind::SignedShort},
     {"unsigned short", 16, false, IntegerKind::UnsignedShort},
     {"int", 32, true, IntegerKind::SignedInt},
     {"unsigned int", 32, false, IntegerKind::UnsignedInt},
     {"long", 64, true, IntegerKind::SignedLong},
     {"unsigned long", 64, false, IntegerKind::UnsignedLong},
     {"long long", 64, true, IntegerKind::SignedLongLong},
     {"unsigned long long", 64, false, IntegerKind::UnsignedLongLong}}};

constexpr unsigned elementsInUnit = 2000;
constexpr unsigned headersInUnit = 5;
constexpr unsigned symbolsInNamespace = 60;
constexpr unsigned firstUnitNumber = 1'000'000; // all numbers of one length sort as text

} // namespace

/// Draws the steps of a plan. The chances below give the shares that docs/benchmarks.md promises.
class Generator {
  public:
    explicit Generator(Plan& plan_) : plan(plan_), random(plan_.seedValue) {}

    void run(unsigned wanted) {
        plan.steps.reserve(wanted / 2); // no freed halves: processes forked later inherit the heap
        emit(ProjectRecord{});
        unsigned const units = std::max(1U, wanted / elementsInUnit);
        for (unsigned unit = 0; unit < units; ++unit)
            files(unit);
        for (unsigned unit = 0; unit < units; ++unit)
            fill(unit, static_cast<unsigned>(static_cast<std::uint64_t>(wanted) * (unit + 1) / units));
    }

  private:
    template <class Record>
    Record const* keep(Record const& record) {
        ++plan.total;
        ++plan.counts[static_cast<std::size_t>(Record::kind)];
        return new (plan.arena.allocate(sizeof(Record), alignof(Record))) Record(record);
    }

    template <class Record>
    void emit(Record const& record) {
        plan.steps.push_back({Record::kind, keep(record)});
        if constexpr (isTypeRecord<Record>) ++types;
    }

    /// `make` draws one record; counted here unless they are mere numbers.
    template <class Record, class Make>
    std::span<Record const> keepMany(unsigned size, Make const& make) {
        if (size == 0) return {};
        auto* const first = static_cast<Record*>(plan.arena.allocate(size * sizeof(Record), alignof(Record)));
        for (unsigned at = 0; at < size; ++at)
            new (first + at) Record(make(at));
        if constexpr (requires { Record::kind; }) {
            plan.total += size;
            plan.counts[static_cast<std::size_t>(Record::kind)] += size;
        }
        return {first, size};
    }

    std::string_view keepText(std::string_view text) {
        auto* const at = static_cast<char*>(plan.arena.allocate(text.size(), 1));
        std::memcpy(at, text.data(), text.size());
        return {at, text.size()};
    }

    template <std::size_t size>
    std::string_view oneOf(std::array<std::string_view, size> const& words) {
        return words[random.below(size)];
    }

    std::string_view routineName() {
        scratch = oneOf(verbs);
        scratch += oneOf(nouns);
        if (random.percent(55)) scratch += oneOf(nouns);
        if (random.percent(10)) scratch += std::to_string(random.below(100));
        return keepText(scratch);
    }

    std::string_view typeName() {
        scratch = oneOf(nouns);
        scratch += oneOf(nouns);
        if (random.percent(50)) scratch += std::to_string(random.below(1000));
        return keepText(scratch);
    }

    std::string_view variableName() {
        scratch = oneOf(shortNames);
        if (random.percent(70)) scratch += oneOf(nouns);
        return keepText(scratch);
    }

    /// One of the unit's own types: two in five times a built-in one.
    TypeIndex anyType() {
        if (random.percent(40)) return {firstType + random.below(integerRows.size())};
        return {firstType + random.below(types - firstType)};
    }

    PositionRecord position() {
        return {.line = 1 + random.below(4000),
                .col = 1 + random.below(100),
                .file = {firstFile + random.below(headersInUnit + 1)}};
    }

    PositionRecord const* positionWithChance(unsigned chance) {
        return random.percent(chance) ? keep(position()) : nullptr;
    }

    ConstantRecord const* constantWithChance(unsigned chance) {
        if (!random.percent(chance)) return nullptr;
        return keep(ConstantRecord{keepText(std::to_string(random.below(100000))), {firstType + 5}});
    }

    VariableRecord variable(unsigned positionChance, unsigned constantChance) {
        VariableRecord drawn;
        drawn.defPos = positionWithChance(positionChance);
        drawn.name = variableName();
        drawn.type = anyType();
        drawn.initVal = constantWithChance(constantChance);
        return drawn;
    }

    MemberRecord member() {
        MemberRecord drawn;
        static_cast<VariableRecord&>(drawn) = variable(100, 0);
        drawn.access = static_cast<Access>(2 + random.below(3));
        drawn.isMutable = random.percent(3);
        return drawn;
    }

    void fillRoutine(FunctionRecord& drawn) {
        drawn.defPos = positionWithChance(100);
        if (random.percent(45))
            drawn.declPos = keepMany<PositionRecord>(1, [this](unsigned) { return position(); });
        drawn.name = routineName();
        drawn.type = anyType();
        drawn.linkage = random.percent(80) ? Linkage::ExternalCXX : Linkage::Internal;
        drawn.params = keepMany<VariableRecord>((random.below(8) + 1) / 4 + (random.percent(5) ? 1 : 0),
                                                [this](unsigned) { return variable(0, 0); });
        if (random.percent(30))
            drawn.scope = keep(BodyRecord{keepMany<VariableRecord>(
                random.percent(40) ? 2 : 1, [this](unsigned) { return variable(25, 30); })});
        if (random.percent(12))
            drawn.templateArgs = keepMany<TemplateArgRecord>(
                1 + random.below(2), [this](unsigned) { return TemplateArgRecord{.type = anyType()}; });
        drawn.numOptionalParams = !drawn.params.empty() && random.percent(10) ? 1 : 0;
        drawn.isInline = random.percent(20);
        drawn.isVariadic = random.percent(1);
    }

    MethodRecord method() {
        MethodRecord drawn;
        fillRoutine(drawn);
        drawn.access = static_cast<Access>(2 + random.below(3));
        drawn.isVirtual = random.percent(20);
        drawn.isThisConst = random.percent(40);
        return drawn;
    }

    void structType() {
        StructRecord drawn;
        drawn.defPos = positionWithChance(100);
        drawn.name = typeName();
        drawn.members = keepMany<MemberRecord>(1 + random.below(6), [this](unsigned) { return member(); });
        drawn.methods = keepMany<MethodRecord>(1 + random.below(7), [this](unsigned) { return method(); });
        drawn.isAbstract = random.percent(10);
        emit(drawn);
    }

    template <class Record>
    Record basedType() {
        Record drawn;
        drawn.type = anyType();
        return drawn;
    }

    void symbol() {
        unsigned const draw = random.below(152);
        if (draw < 12) return structType();
        if (draw < 64) {
            FunctionRecord drawn;
            fillRoutine(drawn);
            return emit(drawn);
        }
        if (draw < 102) return emit(basedType<PointerRecord>());
        if (draw < 129) {
            auto drawn = basedType<QualifiedRecord>();
            drawn.isConst = random.percent(95);
            drawn.isVolatile = !drawn.isConst;
            return emit(drawn);
        }
        if (draw < 144) {
            auto drawn = basedType<TypedefRecord>();
            drawn.defPos = positionWithChance(100);
            drawn.name = typeName();
            drawn.isAlias = random.percent(50);
            return emit(drawn);
        }
        VariableRecord drawn = variable(100, 100);
        drawn.storageClass = random.percent(50) ? StorageClass::Static : StorageClass::Extern;
        drawn.linkage = drawn.storageClass == StorageClass::Static ? Linkage::Internal : Linkage::External;
        emit(drawn);
    }

    /// The headers of a unit, then its main file, which includes them. Paths come in their own order, in
    /// which a collection keyed by path hands the files out.
    void files(unsigned unit) {
        unsigned const first = unit * (headersInUnit + 1);
        std::string const folder = "src/" + std::to_string(firstUnitNumber + unit) + "/";
        for (unsigned at = 0; at <= headersInUnit; ++at) {
            bool const main = at == headersInUnit;
            std::string leaf = std::to_string(at);
            leaf.append(oneOf(nouns)).append(oneOf(nouns)).append(main ? ".cpp" : ".hpp");
            FileRecord drawn;
            drawn.path = keepText(folder + leaf);
            drawn.writtenName = keepText(leaf);
            drawn.isInclude = !main;
            drawn.isTopLevelFile = main;
            unsigned const included = main ? headersInUnit : at / 2;
            drawn.includedFiles =
                keepMany<FileIndex>(included, [first](unsigned of) { return FileIndex{first + of}; });
            emit(drawn);
        }
    }

    void fill(unsigned unit, unsigned until) {
        firstFile = unit * (headersInUnit + 1);
        firstType = types;
        UnitRecord drawn;
        drawn.files =
            keepMany<FileIndex>(headersInUnit + 1, [this](unsigned of) { return FileIndex{firstFile + of}; });
        emit(drawn);
        for (IntegerRow const& row : integerRows) {
            IntegerRecord integer;
            integer.name = row.name;
            integer.numBits = row.numBits;
            integer.isSigned = row.isSigned;
            integer.integerKind = row.kind;
            emit(integer);
        }
        do {
            bool const nested = random.percent(40);
            openNamespace(nested);
            if (nested) {
                openNamespace(false);
                symbols(symbolsInNamespace / 3, until);
                close();
            }
            symbols(symbolsInNamespace, until);
            close();
        } while (plan.total < until);
        close();
    }

    void openNamespace(bool hasNamespaces) {
        scratch = oneOf(shortNames);
        scratch += std::to_string(random.below(50));
        emit(NamespaceRecord{keepText(scratch), random.percent(5), hasNamespaces});
    }

    void symbols(unsigned many, unsigned until) {
        for (unsigned at = 0; at < many && (at == 0 || plan.total < until); ++at)
            symbol();
    }

    void close() { plan.steps.push_back({Kind::Scope, nullptr}); }

    Plan& plan;
    Random random;
    std::string scratch;
    unsigned types = 0;
    unsigned firstType = 0;
    unsigned firstFile = 0;
};

Plan::Plan(std::uint64_t seed, unsigned elements) : seedValue(seed) {
    Generator(*this).run(elements);
}

} // namespace zelkor::bench
