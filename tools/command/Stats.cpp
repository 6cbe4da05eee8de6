#include "Records.hpp"

#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include <algorithm>
#include <iomanip>
#include <map>
#include <sstream>

namespace zelkor::command {

namespace {

struct ClassLine {
    std::string name;
    std::size_t elements = 0;
    std::size_t bytes = 0;
};

/// What the code-insight records hold; initialisers outside of functions are left out.
struct InsightCounts {
    std::size_t functions = 0;
    std::size_t calls = 0;
    std::size_t reads = 0;
    std::size_t writes = 0;
    std::size_t entryPoints = 0;
    std::size_t addressTaken = 0;
    std::size_t withAssembler = 0;
};

struct Statistics {
    std::vector<ClassLine> classes;                  ///< most bytes first
    std::vector<std::pair<std::string, bool>> files; ///< path, whether it came in by an include
    InsightCounts insight;
    std::size_t units = 0;
    std::size_t elements = 0;
    std::size_t bytes = 0;
};

/// Memory of one element: its body, the blocks of its collections and the texts that do not fit into the
/// body.
std::size_t footprint(brant::zero::ModelElementImpl const& element) {
    std::size_t bytes = element.classTable().bodySize;
    brant::zero::visitFeatures(element, [&bytes](brant::zero::schema::PropertyRow const&, auto const& value) {
        using T = std::remove_cvref_t<decltype(value)>;
        if constexpr (std::is_same_v<T, std::string>)
            bytes += value.capacity() > 15 ? value.capacity() + 1 : 0;
        else if constexpr (std::is_same_v<T, std::u16string>)
            bytes += value.capacity() > 7 ? (value.capacity() + 1) * 2 : 0;
        else if constexpr (std::is_base_of_v<brant::zero::AbstractOwnedCollection, T>)
            bytes += value.heapBytes();
    });
    return bytes;
}

void countInsight(zelkor::ast::codeinsight::CodeInsight const& insight, InsightCounts& counts) {
    for (zelkor::ast::codeinsight::FunctionInfo const& record : insight.getFunctions()) {
        ++counts.functions;
        counts.calls += record.getCalledFuns().size();
        counts.reads += record.getReadVars().size();
        counts.writes += record.getWrittenVars().size();
        counts.entryPoints += record.getIsCalled() ? 0 : 1;
        counts.addressTaken += record.getIsAddressTaken() ? 1 : 0;
        counts.withAssembler += record.getHasASMBlock() ? 1 : 0;
    }
}

Statistics collect(zelkor::ast::Ast const& ast) {
    std::map<std::string, ClassLine> byName;
    Statistics result;
    ast.getModel().forEachElement([&](brant::zero::ModelElementImpl const& element) {
        ClassLine& line = byName[element.classTable().shortName];
        line.name = element.classTable().shortName;
        std::size_t const bytes = footprint(element);
        ++line.elements;
        line.bytes += bytes;
        ++result.elements;
        result.bytes += bytes;
    });
    for (auto& [name, line] : byName)
        result.classes.push_back(line);
    std::stable_sort(result.classes.begin(), result.classes.end(),
                     [](ClassLine const& a, ClassLine const& b) { return a.bytes > b.bytes; });
    if (zelkor::ast::Project const project = ast.getProject()) {
        result.units = project.getCompilations().size();
        for (zelkor::ast::source::SourceFile const& file : project.getFiles())
            result.files.emplace_back(brant::zero::toUtf8(file.getPath()), file.getIsInclude());
        for (zelkor::ast::source::CompilationUnit const& unit : project.getCompilations()) {
            for (zelkor::ast::Annotation const& annotation : unit.getAnnotations()) {
                if (auto const insight = zelkor::ast::codeinsight::CodeInsight::cast(annotation))
                    countInsight(insight, result.insight);
            }
        }
    }
    return result;
}

std::string asText(Statistics const& s, bool files) {
    std::ostringstream out;
    std::size_t width = 5;
    for (ClassLine const& line : s.classes)
        width = std::max(width, line.name.size());
    out << std::left << std::setw(static_cast<int>(width)) << "class" << std::right << std::setw(12)
        << "elements" << std::setw(14) << "bytes" << std::setw(12) << "bytes each" << '\n';
    auto row = [&](std::string const& name, std::size_t elements, std::size_t bytes) {
        out << std::left << std::setw(static_cast<int>(width)) << name << std::right << std::setw(12)
            << elements << std::setw(14) << bytes << std::setw(12) << (elements == 0 ? 0 : bytes / elements)
            << '\n';
    };
    for (ClassLine const& line : s.classes)
        row(line.name, line.elements, line.bytes);
    row("total", s.elements, s.bytes);
    std::size_t const headers = static_cast<std::size_t>(
        std::count_if(s.files.begin(), s.files.end(), [](auto const& f) { return f.second; }));
    out << '\n'
        << counted(s.units, "unit") << ", " << counted(s.files.size(), "file") << ", " << headers
        << " of them included\n";
    if (InsightCounts const& found = s.insight; found.functions > 0)
        out << counted(found.functions, "function") << " with " << counted(found.calls, "call") << ", "
            << counted(found.reads, "read") << " and " << counted(found.writes, "write") << "; "
            << found.entryPoints << " are not called, of " << found.addressTaken << " the address is taken, "
            << found.withAssembler << " hold assembler code\n";
    if (files)
        for (auto const& [path, included] : s.files)
            out << (included ? "  included  " : "  main      ") << path << '\n';
    return out.str();
}

std::string asJson(Statistics const& s) {
    rapidjson::StringBuffer buffer;
    rapidjson::PrettyWriter<rapidjson::StringBuffer> json(buffer);
    json.SetIndent(' ', 2);
    json.StartObject();
    json.Key("format");
    json.String("zelkor-stats");
    json.Key("version");
    json.String("1.0");
    json.Key("elements");
    json.Uint64(s.elements);
    json.Key("bytes");
    json.Uint64(s.bytes);
    json.Key("units");
    json.Uint64(s.units);
    json.Key("insight");
    json.StartObject();
    InsightCounts const& found = s.insight;
    for (auto const& [key, count] : {std::pair{"functions", found.functions},
                                     {"calls", found.calls},
                                     {"reads", found.reads},
                                     {"writes", found.writes},
                                     {"entryPoints", found.entryPoints},
                                     {"addressTaken", found.addressTaken},
                                     {"withAssembler", found.withAssembler}}) {
        json.Key(key);
        json.Uint64(count);
    }
    json.EndObject();
    json.Key("classes");
    json.StartArray();
    for (ClassLine const& line : s.classes) {
        json.StartObject();
        json.Key("class");
        json.String(line.name.c_str());
        json.Key("elements");
        json.Uint64(line.elements);
        json.Key("bytes");
        json.Uint64(line.bytes);
        json.EndObject();
    }
    json.EndArray();
    json.Key("files");
    json.StartArray();
    for (auto const& [path, included] : s.files) {
        json.StartObject();
        json.Key("path");
        json.String(path.c_str());
        json.Key("included");
        json.Bool(included);
        json.EndObject();
    }
    json.EndArray();
    json.EndObject();
    return std::string(buffer.GetString()) + "\n";
}

} // namespace

int runStats(Arguments const& arguments) {
    arguments.requireOperands({"FILE"});
    zelkor::ast::Ast const ast = readModel(arguments.operands()[0]);
    Statistics const statistics = collect(ast);
    print(arguments.has("--json") ? asJson(statistics) : asText(statistics, arguments.has("--files")));
    return Ok;
}

} // namespace zelkor::command
