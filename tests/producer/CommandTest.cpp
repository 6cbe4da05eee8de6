// Compile databases and commands as they come, and units that cannot be read in full.
#include "FactsSupport.hpp"
#include "Producer.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace zelkor::producer::test {
namespace {

using Arguments = std::vector<std::string>;

TEST(Command, OnlyWhatTheFrontEndNeedsIsLeft) {
    struct Row {
        Arguments given, cleaned;
    };
    for (Row const& row : {
             Row{{"c++", "-c", "a.cc", "-o", "a.o"}, {"c++", "a.cc"}},
             Row{{"c++", "-oa.o", "a.cc"}, {"c++", "a.cc"}},
             Row{{"/usr/bin/ccache", "/usr/bin/g++", "-c", "a.cc"}, {"/usr/bin/g++", "a.cc"}},
             Row{{"distcc", "ccache", "gcc", "a.c"}, {"gcc", "a.c"}},
             Row{{"cc", "-MD", "-MF", "a.d", "-MT", "a.o", "-MP", "a.c"}, {"cc", "a.c"}},
             Row{{"cc", "-Wall", "-Werror", "-Werror=shadow", "-O2", "a.c"}, {"cc", "-Wall", "-O2", "a.c"}},
             Row{{"cc", "-save-temps=obj", "-DMF=-MF", "a.c"}, {"cc", "-DMF=-MF", "a.c"}},
             Row{{"cc", "a.c", "-o"}, {"cc", "a.c"}},
             Row{{"cc", "-fprofile-use=p", "-mtune=native", "-fdiagnostics-format=json", "a.c"},
                 {"cc", "a.c"}},
             Row{{"cc", "-Xclang", "-include-pch", "-Xclang", "h.pch", "-Xclang", "-include", "a.c"},
                 {"cc", "-Xclang", "-include", "a.c"}},
             Row{{"cc", "a.c", "-Xclang", "-include-pch", "-Xclang", "h.pch"}, {"cc", "a.c"}},
             Row{{"ccache"}, {"ccache"}},
             Row{{}, {}},
         }) {
        EXPECT_EQ(cleanArguments(row.given), row.cleaned);
    }
}

TEST(Command, DatabaseIsReadInOrderFromDirectoryOrFile) {
    TemporaryDirectory const directory;
    std::string const text = R"([{"directory": "/p", "file": "src/b.c", "command": "cc -DX='a b' -c src/b.c"},
                                 {"directory": "/p/x", "file": "/p/src/sub/a.c", "arguments": ["cc", "../src/sub/a.c"]}])";
    std::filesystem::path const named = directory.write("compile_commands.json", text);
    std::filesystem::path const other = directory.write("another.json", text);
    for (std::filesystem::path const& path : {directory.path(), named, other}) {
        std::vector<CompileCommand> const commands = readCompileDatabase(path.string());
        ASSERT_EQ(commands.size(), 2U) << path;
        EXPECT_EQ(commands[0].file, "/p/src/b.c");
        EXPECT_EQ(commands[0].directory, "/p");
        EXPECT_NE(std::find(commands[0].arguments.begin(), commands[0].arguments.end(), "-DX=a b"),
                  commands[0].arguments.end());
        EXPECT_EQ(commands[1].file, "/p/src/sub/a.c");
        EXPECT_EQ(commonDirectory(commands), "/p/src");
        std::vector<CompileCommand> more = commands;
        more.insert(more.begin(), more[0]);
        more[0].file = "/usr/src/framework/all.cc";
        EXPECT_EQ(commonDirectory(more), "/p/src");
        more.resize(1);
        EXPECT_EQ(commonDirectory(more), "/usr/src/framework");
    }
}

TEST(Command, FoldersMayBeToldFromTheDatabase) {
    TemporaryDirectory const directory;
    directory.write("compile_commands.json",
                    R"([{"directory": "sub", "file": "../a.c", "command": "cc -c ../a.c"}])");
    std::vector<CompileCommand> const commands = readCompileDatabase(directory.path().string());
    ASSERT_EQ(commands.size(), 1U);
    EXPECT_EQ(commands[0].directory, (directory.path() / "sub").string());
    EXPECT_EQ(commands[0].file, (directory.path() / "a.c").string());
}

TEST(Command, CommandsOfOtherLanguagesAreTaken) {
    struct Row {
        char const* file;
        Arguments arguments;
        bool isTaken;
    };
    std::vector<Row> const rows{{"/a.S", {"cc", "-c", "a.S"}, true},
                                {"/a.c", {"cc", "-c", "a.c"}, false},
                                {"/a.o", {"cc", "-o", "a", "a.o"}, true},
                                {"/a.inc", {"cc", "-c", "a.inc"}, false},
                                {"/a.C", {"cc", "a.C"}, false},
                                {"/b.S", {"cc", "-xc++", "b.S"}, false},
                                {"/c.S", {"cc", "-x", "assembler-with-cpp", "c.S"}, true},
                                {"/d.c", {"cc", "-x", "assembler", "d.c"}, true},
                                {"/e.f90", {"gfortran", "-x", "none", "e.f90"}, true}};
    std::vector<CompileCommand> commands;
    Arguments taken, left;
    for (Row const& row : rows) {
        commands.push_back({"/", row.file, row.arguments});
        (row.isTaken ? taken : left).push_back(row.file);
    }
    auto const files = [](std::vector<CompileCommand> const& list) {
        Arguments names;
        for (CompileCommand const& command : list)
            names.push_back(command.file);
        return names;
    };
    EXPECT_EQ(files(takeForeignCommands(commands)), taken);
    EXPECT_EQ(files(commands), left);
}

TEST(Command, UnusableDatabasesSayWhatAndWhere) {
    TemporaryDirectory const directory;
    directory.write("empty/compile_commands.json", "");
    directory.write("none/compile_commands.json", "[]");
    directory.write("malformed/compile_commands.json", "[{\"directory\": ");
    directory.write("other/compile_commands.json", "{\"hello\": 1}");
    std::filesystem::create_directories(directory.path() / "folder" / "compile_commands.json");
    struct Row {
        char const* name;
        char const* message;
    };
    for (Row const& row :
         {Row{"missing", "no such compile database"}, Row{"empty", "is empty"},
          Row{"none", "names no translation unit"}, Row{"malformed", "is no compile database: "},
          Row{"other", "is no compile database: Expected array."}, Row{"folder", "is a folder"}}) {
        std::string const path = (directory.path() / row.name).string();
        if (std::string_view(row.name) == "missing") std::filesystem::create_directory(path);
        try {
            readCompileDatabase(path);
            ADD_FAILURE() << row.name << " was taken";
        } catch (ImportError const& error) {
            EXPECT_NE(std::string(error.what()).find(row.message), std::string::npos) << error.what();
            EXPECT_NE(std::string(error.what()).find(path + "/compile_commands.json"), std::string::npos)
                << error.what();
        }
    }
}

TEST(Command, FrontEndWithoutItsHeadersIsRefused) {
    TemporaryDirectory const directory;
    try {
        findResourceDirectory(directory.path().string());
        FAIL() << "a directory without headers was taken";
    } catch (ImportError const& error) {
        EXPECT_NE(std::string(error.what()).find("libclang-common-19-dev"), std::string::npos)
            << error.what();
    }
}

TEST(Unit, ForeignOptionsAreReportedAndDoNoHarm) {
    UnitFacts const facts =
        parse("plain.c", {"-fconserve-stack", "-mpreferred-stack-boundary=3", "-ffat-lto-objects",
                          "-fno-var-tracking-assignments", "-Wno-such-warning"});
    EXPECT_EQ(facts.failure, "");
    EXPECT_FALSE(facts.hasErrors());
    EXPECT_EQ(facts.rejectedOptions, (Arguments{"-fconserve-stack", "-mpreferred-stack-boundary=3",
                                                "-fno-var-tracking-assignments"}));
    EXPECT_NE(findEntity(facts, EntityKind::Function, "used"), nullptr);
}

// The front end refuses the whole command for one of these, and tells nobody which.
TEST(Unit, ValuesThatOnlyAnotherCompilerTakesAreLeftOut) {
    for (Arguments const& options :
         {Arguments{"-march=no-such-processor"}, Arguments{"-mfpmath=387", "-march=no-such-processor"},
          Arguments{"-std=c++17"}, Arguments{"-traditional-cpp"},
          Arguments{"-march=no-such-processor", "-std=c99x"}}) {
        Arguments given = options;
        given.push_back("-m32");
        UnitFacts const facts = parse("plain.c", given);
        EXPECT_EQ(facts.failure, "") << options.front();
        EXPECT_EQ(facts.target.pointerBits, 32U) << options.front();
        EXPECT_NE(findEntity(facts, EntityKind::Function, "used"), nullptr) << options.front();
        for (std::string const& option : options)
            EXPECT_NE(std::find(facts.rejectedOptions.begin(), facts.rejectedOptions.end(), option),
                      facts.rejectedOptions.end())
                << option;
    }
}

TEST(Unit, AMissingHeaderLeavesTheRestWhole) {
    UnitFacts const facts = parse("broken.cpp");
    EXPECT_EQ(facts.missingHeaders, Arguments{"no_such_header.hpp"});
    EXPECT_EQ(facts.failure, "");
    ASSERT_GE(facts.diagnostics.size(), 3U);
    EXPECT_EQ(facts.diagnostics[0].line, 2U);
    EXPECT_NE(facts.diagnostics[0].text.find("no_such_header.hpp"), std::string::npos);
    EXPECT_GE(facts.diagnostics[0].severity, Severity::Error);
    Entity const* const kept = findEntity(facts, EntityKind::Function, "stillThere");
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(typeText(facts, kept->type), "fn()->vector") << "a missing header must not turn types into int";
    EXPECT_NE(findEntity(facts, EntityKind::Variable, "after"), nullptr);
    EXPECT_NE(findEntity(facts, EntityKind::Member, "field", "Half"), nullptr);
}

TEST(Unit, PlacesOfErrorsAreToldFromTheProjectRoot) {
    TemporaryDirectory const directory;
    std::string const file = directory.write("part/bad.c", "#include \"bad.h\"\n").string();
    directory.write("part/bad.h", "unknown v;\n");
    CompileCommand const command{(directory.path() / "part").string(), file, {"cc", "-c", "bad.c"}};
    UnitFacts const facts =
        parseUnit(command, {findResourceDirectory(""), {}}, ProjectPaths(directory.path().string()));
    ASSERT_EQ(facts.diagnostics.size(), 1U);
    EXPECT_EQ(facts.diagnostics[0].file, "part/bad.h");
}

TEST(Unit, MoreErrorsThanTheFrontEndShowsByDefault) {
    TemporaryDirectory const directory;
    std::string text;
    for (int i = 0; i < 50; ++i)
        text += "unknown" + std::to_string(i) + " v" + std::to_string(i) + ";\n";
    directory.write("errors.c", text + "int last;\n");
    UnitFacts const facts = parse("errors.c", {}, directory.path());
    EXPECT_EQ(facts.diagnostics.size(), 50U);
    EXPECT_NE(findEntity(facts, EntityKind::Variable, "last"), nullptr);
}

TEST(Unit, WhatCannotBeParsedSaysWhy) {
    struct Row {
        char const* file;
        Arguments options;
        char const* reason;
    };
    for (Row const& row :
         {Row{"nowhere.c", {}, "No such file"}, Row{"plain.c", {"-include-pch", "no.pch"}, "could not parse"},
          Row{"first.cpp", {"-target", "no-such-machine"}, "could not parse"}}) {
        UnitFacts const facts = parse(row.file, row.options);
        EXPECT_NE(facts.failure.find(row.reason), std::string::npos) << row.file << ": " << facts.failure;
        EXPECT_TRUE(facts.entities.empty() && facts.rejectedOptions.empty());
        EXPECT_NE(facts.advice, "");
    }
}

// A relative name in the arguments and an absolute one in the member "file" is what recorders of builds
// write.
TEST(Unit, RelativeNamesAreRelativeToTheDirectoryOfTheCommand) {
    CompileCommand command;
    command.directory = (fixtures() / "include").string();
    command.file = (fixtures() / "plain.c").string();
    command.arguments = {"cc", "-c", "../plain.c"};
    UnitFacts const facts =
        parseUnit(command, {findResourceDirectory(""), {}}, ProjectPaths(fixtures().string()));
    EXPECT_EQ(facts.failure, "");
    EXPECT_FALSE(facts.hasErrors());
    EXPECT_EQ(facts.file, "plain.c");
    EXPECT_EQ(facts.files.at(0).path, "plain.c");
}

TEST(Unit, DeepNestingEndsWell) {
    TemporaryDirectory const directory;
    std::string sum = "int sum = 0";
    for (int i = 0; i < 3000; ++i)
        sum += " + 1";
    std::string types = "int";
    std::string pointers;
    for (int i = 0; i < 1000; ++i)
        pointers += '*';
    std::string const lists = std::string(100, '{') + "1" + std::string(100, '}');
    directory.write("deep.c", sum + ";\nint " + pointers + "p;\nint n = " + lists + ";\nint last;\n");
    UnitFacts const facts = parse("deep.c", {"-fbracket-depth=5000"}, directory.path());
    EXPECT_EQ(facts.failure, "");
    Entity const* const variable = findEntity(facts, EntityKind::Variable, "sum");
    ASSERT_NE(variable, nullptr);
    EXPECT_EQ(constantText(*variable->as<VariableFacts>()->initialiser), "int 3000");
    EXPECT_NE(findEntity(facts, EntityKind::Variable, "last"), nullptr);
}

TEST(Unit, NothingDependsOnWhereTheProjectLies) {
    TemporaryDirectory const elsewhere;
    std::filesystem::copy(fixtures(), elsewhere.path() / "copy", std::filesystem::copy_options::recursive);
    for (char const* const file : {"first.cpp", "second.cpp", "plain.c"}) {
        UnitFacts const here = parse(file);
        UnitFacts const there = parse(file, {}, elsewhere.path() / "copy");
        ASSERT_EQ(here.entities.size(), there.entities.size());
        ASSERT_EQ(here.types.size(), there.types.size());
        for (std::size_t i = 0; i < here.entities.size(); ++i) {
            EXPECT_EQ(here.entities[i].id, there.entities[i].id) << here.entities[i].name;
            EXPECT_EQ(here.entities[i].name.find('/'), std::string::npos) << here.entities[i].name;
        }
        for (std::size_t i = 0; i < here.types.size(); ++i) {
            EXPECT_EQ(here.types[i].id, there.types[i].id);
            EXPECT_EQ(there.types[i].name.find(elsewhere.path().string()), std::string::npos);
        }
        for (std::size_t i = 0; i < here.macros.size(); ++i)
            EXPECT_EQ(here.macros[i].id, there.macros[i].id);
    }
}

} // namespace
} // namespace zelkor::producer::test
