// The rules by which texts of the model and of the front end are compared: what they make equal, and what
// not.
#include "Spelling.hpp"

#include <gtest/gtest.h>

namespace zelkor::producer::test {
namespace {

struct Row {
    char const* ours;
    char const* theirs;
};

TEST(Spelling, FullNamesAreEqualUpToTheRules) {
    for (Row const& row : {
             Row{"f(char const *)", "f(char const*)"},
             Row{"f(unsigned int)", "f( unsigned  int )"},
             Row{"f(void)", "f()"},
             Row{"f(char const *)", "f(const char*)"},
             Row{"f(std::vector<int, A<int>> const &)", "f(const std::vector<int, A<int> >&)"},
             Row{"f(A<char const *>)", "f(A<const char*>)"},
             Row{"f(unsigned long const volatile)", "f(const volatile unsigned long)"},
             Row{"f(int /* FunctionType */ (char))", "f(int (*)(char))"},
             Row{"f(int /* FunctionType */ (void))", "f(int (* const)())"},
             Row{"f(int *)", "f(int C::*)"},
             Row{"f(S *)", "f(struct S *)"},
             Row{"f(char * restrict)", "f(char*__restrict)"},
             Row{"C::f[abi:cxx11](void)", "C::f()"},
             Row{"f(void)", "(anonymous namespace)::f()"},
             Row{"ns::::f(void)", "ns::(anonymous namespace)::f()"},
             Row{"A<3, 1>::f(void)", "A<3u, true>::f()"},
             Row{"A<2>::f(void)", "A<(ns::E)2>::f()"},
             Row{"f::Local::m(void)", "f(int)::Local::m()"},
             Row{"f::Local::m(void)", "f(int) const::Local::m()"},
             Row{"A::operator const B &(void) const", "A::operator B const&() const"},
             Row{"f(int &[2], int *[2])", "f(int __vector(2)&, int __vector(2)*)"},
             Row{"f(int /* FunctionType */ (char)) const", "f(int (C::*)(char) const noexcept) const"},
             Row{"f(int[3], char const *[])", "f(int*, const char**)"},
             Row{"f(int[2][3], float[4])", "f(int (*) [3], float __vector(4))"},
             Row{"A::operator string const &(void) const", "A::operator ns::string const&() const"},
             Row{"f(std::nullptr_t)", "f(decltype(nullptr))"},
             Row{"f::#unnamed#::operator()::L::m(void) const",
                 "f(int)::{lambda(int)#2}::operator()(int) const::L::m() const"},
             Row{"f<int>::#unnamed#::operator()::L::operator S(void)",
                 "f<int>(A<char>)::$_0::operator()() const::L::operator ns::S()"},
             Row{"f(__int128_t const &, __uint128_t)", "f(__int128 const&, unsigned __int128)"},
             Row{"C::f(void) const", "C::f() const &"},
             Row{"C::operator S *(void)", "C::operator S*() &&"},
             Row{"f<(sizeof(T) > 1), A<int>>(void)", "f<(sizeof(T) > 1), A<int> >()"},
             Row{"f(std::basic_ostream<char, std::char_traits<char>> &)", "f(std::ostream&)"},
         })
        EXPECT_EQ(fullSpelling(row.ours), fullSpelling(row.theirs)) << row.theirs;
    for (Row const& row : {
             Row{"ns::f(int)", "f(int)"},
             Row{"f(A<int>)", "f(A<char>)"},
             Row{"f(char const *)", "f(char * const)"},
             Row{"f(int, ...)", "f(int)"},
             Row{"f(int *)", "f(int **)"},
             Row{"f(unsigned int)", "f(int)"},
             Row{"f(long long)", "f(long)"},
             Row{"A<3>::f()", "A<4>::f()"},
             Row{"f(int (*)(char))", "f(int (*)(int))"},
             Row{"f() const", "f()"},
             Row{"A::operator<(int) const", "A::operator<(int)"},
             Row{"A::operator int()", "A::operator char()"},
             Row{"operator new(int)", "operator delete(int)"},
             Row{"f(int[3][4])", "f(int**)"},
             Row{"f(int &[2])", "f(int __vector(4)&)"},
             Row{"f(__int128_t)", "f(unsigned __int128)"},
             Row{"C::f(int &)", "C::f(int) &"},
             Row{"f::#unnamed#::operator()::L::m()", "f()::operator()()::L::m()"},
             Row{"A::operator const B &(void)", "A::operator B&()"},
         })
        EXPECT_NE(fullSpelling(row.ours), fullSpelling(row.theirs)) << row.theirs;
}

TEST(Spelling, WrittenTypesLeaveOutScopesAndArguments) {
    for (Row const& row : {
             Row{"std::string const &", "const string &"},
             Row{"std::vector<std::basic_string<char>, int> *", "vector<std::string> *"},
             Row{"ns::A<int>::type const &", "const typename A<int>::type &"},
             Row{"A &&", "::A &&"},
             Row{"A ... &&", "A &&..."},
             Row{"int[3]", "int[3]"},
             Row{"T const (&)[]", "const T (&)[N]"},
             Row{"type", "typename A<int>::template B<0>::type"},
             Row{"Enable<1>::type", "typename Enable<(sizeof(To) > sizeof(From)), int>::type"},
             Row{"A const & /* FunctionType */ (void)", "const A &(C::*)() const"},
             Row{"ns::f:: /* StructType */ const &", "const (lambda at f.cpp:1:2) &"},
         })
        EXPECT_EQ(writtenSpelling(row.ours), writtenSpelling(row.theirs)) << row.theirs;
    for (Row const& row : {
             Row{"std::string &", "string const &"},
             Row{"std::size_t", "unsigned long"},
             Row{"ns::A *", "ns::B *"},
             Row{"int[3]", "int[4]"},
             Row{"int /* FunctionType */ (char, ...)", "int (char)"},
             Row{"ns::f:: /* StructType */", "f"},
             Row{"ns::f", "(lambda at f.cpp:1:2)"},
         })
        EXPECT_NE(writtenSpelling(row.ours), writtenSpelling(row.theirs)) << row.theirs;
}

} // namespace
} // namespace zelkor::producer::test
