#include "Classes.hpp"

#include "Options.hpp"

#include <zelkor/ast.hpp>

#include <brant/zero/meta/Names.hpp>

#include <algorithm>

namespace zelkor::command {

namespace meta = brant::zero::meta;

namespace {

void collect(meta::Package const& package, std::vector<meta::Class> const& bases,
             std::vector<meta::Class>& classes) {
    for (meta::Type const& type : package.getTypes())
        if (meta::Class const cls = meta::Class::cast(type))
            if (std::any_of(bases.begin(), bases.end(),
                            [&](meta::Class const& base) { return meta::isSubclassOf(cls, base); }))
                classes.push_back(cls);
    for (meta::Package const& inner : package.getSubPackages())
        collect(inner, bases, classes);
}

} // namespace

meta::Class classNamed(std::string const& word, std::vector<meta::Class> const& bases) {
    std::vector<meta::Class> classes;
    collect(zelkor::ast::MetaPackageZelkor_ast::getInstance().rootPackage(), bases, classes);
    std::vector<std::string> names;
    for (meta::Class const& cls : classes) {
        std::string const simple = brant::zero::toUtf8(cls.getName());
        std::string const dotted = meta::qualifiedNameUtf8(cls);
        bool const ends = !word.empty() && dotted.ends_with(word);
        if (ends && (dotted.size() == word.size() || dotted[dotted.size() - word.size() - 1] == '.'))
            return cls;
        names.push_back(simple);
    }
    std::string const near = nearest(word, names);
    throw UsageError("'" + word + "' is no class of symbols" +
                     (near.empty() ? "; zelkor schema lists the classes" : "; did you mean '" + near + "'?"));
}

} // namespace zelkor::command
