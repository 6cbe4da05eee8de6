"""A model with files, classes, a template and code insight, as the sources below would give it.

    // inc/box.hpp                                   // src/a.cpp (includes box.hpp, stdio.h)
    struct Base { virtual void go(int); };           int main() { run(1); helper(2); work(); apply<int>(); }
    struct Derived : Base {                          void run(int) { Base b; b.go(counter); counter = 1; run(0); }
        void go(int) override;                       void helper(int) { printf("hi"); }
        int size;                                    void helper(char const *) { counter++; }
    };                                               void lonely() {}
    template <class T> void apply() { work(); }      int limit = start();   // of stdio.h
                                                     void (*hook)() = work;
    // src/b.cpp (includes box.hpp, and              void late() { hook(); scan(&limit); }
    // box.hpp includes inner.hpp)
    void Derived::go(int) { size = 1; helper("x"); }
    void work() { asm(""); }
"""

import support
from support import element, uuid

NAMES = (
    "project a b box inner stdio unit_a unit_b int char pointer base derived base_go derived_go size main run helper "
    "helper_text printf lonely work apply apply_int apply_template counter limit insight unused const_char start hook hook_type hook_pointer late"
).split()
ID = {name: uuid(number) for number, name in enumerate(NAMES, 1)}


def position(file, line, column=1):
    return support.position(ID[file], line, column)


def file(name, path, includes=(), **flags):
    written = [f"{other}.hpp" for other in includes]
    return element("source.SourceFile", ID[name], Path=path, IncludedFiles=[ID[other] for other in includes],
                   IncludedFileWrittenNames=written, **flags)


def function(name, spelling, line, params=(), where="a", cls="Function", **more):
    parameters = [element("Variable", Name=f"p{i}", Type=ID[kind]) for i, kind in enumerate(params)]
    return element(cls, ID[name], Name=spelling, Params=parameters, DefPos=position(where, line, 6), **more)


def pointing(*names):
    return element("codeinsight.PtrInfo", PointsTo=[ID[name] for name in names])


def calling(*names):
    return element("codeinsight.FunInfo", CalledFuns=[ID[name] for name in names])


def record(name, calls=(), reads=(), writes=(), annotations=(), **flags):
    lists = {"CalledFuns": calls, "ReadVars": reads, "WrittenVars": writes}
    return element("codeinsight.FunctionInfo", Function=ID[name], Annotations=list(annotations),
                   **{key: [ID[other] for other in names] for key, names in lists.items()}, **flags)


RECORDS = [
    record("main", ["run", "helper", "work", "apply_int"], IsDefined=True),
    record("run", ["base_go", "run"], ["counter"], ["counter"], IsDefined=True, IsCalled=True),
    record("helper", ["printf"], IsDefined=True, IsCalled=True),
    record("helper_text", [], ["counter"], ["counter"], IsDefined=True, IsCalled=True),
    record("derived_go", ["helper_text"], [], ["size"], IsDefined=True, IsCalled=True),
    record("work", IsDefined=True, IsCalled=True, IsAddressTaken=True, HasASMBlock=True),
    record("apply", ["work"], IsDefined=True),
    record("lonely", IsDefined=True),
    record("base_go", annotations=[calling("derived_go")], IsCalled=True),
    record("late", [], ["hook"], annotations=[pointing("limit")], IsDefined=True),
    record("start", IsCalled=True),
    record("apply_int", IsCalled=True),
    record("printf", IsCalled=True),
]
VARIABLES = [
    element("codeinsight.VariableInfo", Variable=ID["counter"], IsRead=True, IsWritten=True),
    element("codeinsight.VariableInfo", Variable=ID["size"], IsWritten=True),
    element("codeinsight.VariableInfo", Variable=ID["limit"], Annotations=[calling("start")], IsRead=True),
    element("codeinsight.VariableInfo", Variable=ID["hook"], Annotations=[pointing("work")], IsRead=True),
]
MACROS = [element("codeinsight.MacroInfo", Macro=ID["unused"], InvocationPositions=[position("a", 30), position("b", 2)])]

CLASSES = [
    element("types.StructType", ID["base"], Name="Base", DefPos=position("box", 1, 8), Methods=[
        element("types.Method", ID["base_go"], Name="go", IsVirtual=True, Params=[element("Variable", Type=ID["int"])],
                DeclPos=[position("box", 1, 28)])]),
    element("types.StructType", ID["derived"], Name="Derived", DefPos=position("box", 2, 8),
            BaseClasses=[element("types.BaseClass", Type=ID["base"])],
            Members=[element("types.Member", ID["size"], Name="size", Type=ID["int"], DefPos=position("box", 4, 9))],
            Methods=[function("derived_go", "go", 2, ["int"], "b", "types.Method", IsVirtual=True)]),
    element("types.PointerType", ID["pointer"], Type=ID["const_char"]),
    element("types.QualifiedType", ID["const_char"], Type=ID["char"], IsConst=True),
]
SYMBOLS = [
    element("types.IntegerType", ID["int"], Name="int"),
    element("types.IntegerType", ID["char"], Name="char", Kind="Char"),
    function("main", "main", 2),
    function("run", "run", 3, ["int"]),
    function("helper", "helper", 4, ["int"]),
    function("helper_text", "helper", 5, ["pointer"]),
    function("lonely", "lonely", 6),
    element("Function", ID["printf"], Name="printf", IsVariadic=True, DeclPos=[position("stdio", 9, 5)]),
    element("Variable", ID["counter"], Name="counter", Type=ID["int"], DefPos=position("a", 1, 5)),
    element("Variable", ID["limit"], Name="limit", Type=ID["int"], DefPos=position("a", 1, 9)),
    element("types.FunctionType", ID["hook_type"]),
    element("types.PointerType", ID["hook_pointer"], Type=ID["hook_type"]),
    element("Variable", ID["hook"], Name="hook", Type=ID["hook_pointer"], DefPos=position("a", 8, 8)),
    element("Function", ID["start"], Name="start", DeclPos=[position("stdio", 12)]),
    function("late", "late", 9),
    element("Template", ID["apply_template"], Name="apply", ProtoTypeInstantiation=ID["apply"]),
    function("apply", "apply", 6, (), "box", AssocTemplate=ID["apply_template"], IsTemplatePrototype=True),
    element("Function", ID["apply_int"], Name="apply", AssocTemplate=ID["apply_template"], DeclPos=[position("box", 6, 6)],
            TemplateArgs=[element("TemplateArg", Kind="Type", Type=ID["int"])]),
]


def elements(insight=True, records=None):
    """The elements of the file; without insight, or with other records in place of these."""
    summary = element("codeinsight.CodeInsight", ID["insight"], Functions=RECORDS if records is None else records,
                      Variables=VARIABLES, Macros=MACROS)
    files = [
        file("a", "src/a.cpp", ["box", "stdio"], IsTopLevelFile=True),
        file("b", "src/b.cpp", ["box"], IsTopLevelFile=True),
        file("box", "inc/box.hpp", ["inner"], IsInclude=True),
        file("inner", "inc/inner.hpp", ["box"], IsInclude=True),
        file("stdio", "/usr/include/stdio.h", IsInclude=True, IsIncludedFromSystemIncludeDir=True),
    ]
    first = element("source.CompilationUnit", ID["unit_a"], Files=[ID["a"], ID["box"]], Annotations=[summary] if insight else [],
                    Macros=[element("Macro", ID["unused"], Name="UNUSED", DefPos=position("inner", 1))], Symbols=SYMBOLS,
                    Namespaces=[element("Namespace", Name="ns", Symbols=CLASSES)])
    second = element("source.CompilationUnit", ID["unit_b"], Files=[ID["b"]], Symbols=[function("work", "work", 3, where="b")])
    return [element("Project", ID["project"], Files=files, Compilations=[first, second])]
