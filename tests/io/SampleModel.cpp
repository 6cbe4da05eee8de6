#include "SampleModel.hpp"

#include <brant/zero/Map.hpp>
#include <brant/zero/Primitive.hpp>

#include <map>

namespace zelkor::test {

namespace {

using namespace brant::zero;
using schema::ClassTable;
using schema::PropertyKind;
using schema::PropertyRow;
using schema::ValueKind;

class Maker {
  public:
    explicit Maker(Model const& model) : model_(model) {}

    void makeAll() {
        Transaction transaction = model_.beginTransaction();
        for (ClassTable const* table : meta::MetaRegistry::getInstance().modelClasses())
            if (!table->isAbstract) firstOf_.emplace(table, make(*table).get());
        // A second one of each class is filled; the first ones are what it refers to.
        for (auto const& [name, table] : inOrder()) {
            ModelElement const element = make(*table);
            for (std::size_t i = 1; i < table->count; ++i)
                fill(*element.get(), *table->stored[i]);
        }
        transaction.commit();
    }

  private:
    ModelElement make(ClassTable const& table) {
        return Core::create(table, model_, nameUuid5({}, "sample " + std::to_string(++count_)));
    }

    static std::map<std::string, ClassTable const*> inOrder() {
        std::map<std::string, ClassTable const*> tables;
        for (ClassTable const* table : meta::MetaRegistry::getInstance().modelClasses())
            if (!table->isAbstract) tables.emplace(table->shortName, table);
        return tables;
    }

    static ClassTable const& concrete(ClassTable const& wanted) {
        for (auto const& [name, table] : inOrder())
            if (table->conformsTo(wanted)) return *table;
        throw std::logic_error(std::string("no class under ") + wanted.name);
    }

    void fill(ModelElementImpl& element, PropertyRow const& row) {
        switch (row.kind) {
        case PropertyKind::Attribute:
            return fillAttribute(element, row);
        case PropertyKind::ManyAttribute:
            return fillList(element, row);
        case PropertyKind::ContainerEnd:
            return;
        case PropertyKind::Map:
            for (char16_t const* key : {u"b", u"\U0001F600", u"\uFFFD", u"a"}) {
                ModelElement const member = make(concrete(*row.target));
                Core::setString(*member.get(), *row.related, key);
                Core::addReference(element, row, member.get());
            }
            return;
        default:
            for (int i = row.kind == PropertyKind::ManyReference ? 2 : 1; i > 0; --i)
                Core::addReference(element, row,
                                   row.owning() ? make(concrete(*row.target)).get()
                                                : firstOf_.at(&concrete(*row.target)));
        }
    }

    void fillAttribute(ModelElementImpl& element, PropertyRow const& row) {
        switch (row.valueKind) {
        case ValueKind::Boolean:
            return Core::setBoolean(element, row, row.defaultBits == 0);
        case ValueKind::String:
            return Core::setString(element, row, u"wide \u00e9 \U0001F600 <&> \"quoted\" \\ \t\r\n end ");
        case ValueKind::StdString:
            return Core::setStdString(element, row, " name<T&&>, \"x\" \\ ]]> \xc3\xa9 ");
        case ValueKind::Enumeration:
            for (std::uint16_t i = 0; i < row.enumeration->literalCount; ++i)
                if (auto const value = static_cast<std::uint32_t>(row.enumeration->literals[i].value);
                    value != static_cast<std::uint32_t>(row.defaultBits))
                    return Core::setWord(element, row, value);
            return;
        case ValueKind::Integer:
            return Core::setWord(element, row, static_cast<std::uint32_t>(-7));
        default:
            return Core::setWord(element, row, 4294967295u);
        }
    }

    static void fillList(ModelElementImpl& element, PropertyRow const& row) {
        if (row.valueKind == ValueKind::String) {
            auto& texts = Core::field<PrimitiveSequence<std::u16string>>(element, row);
            for (char16_t const* text : {u"", u"twice", u"twice", u" \u2028 "})
                texts.push_back(text);
        } else if (row.valueKind == ValueKind::StdString) {
            auto& texts = Core::field<PrimitiveSequence<std::string>>(element, row);
            for (char const* text : {"0", "", "\xff no text", "18446744073709551615"})
                texts.push_back(text);
        } else {
            auto& numbers = Core::field<PrimitiveSequence<int>>(element, row);
            for (int const number : {0, -2147483647 - 1, 2147483647, 0})
                numbers.push_back(number);
        }
    }

    Model model_;
    int count_ = 0;
    std::map<ClassTable const*, ModelElementImpl*> firstOf_;
};

} // namespace

zelkor::ast::Ast makeSampleModel() {
    zelkor::ast::MetaPackageZelkor_ast::getInstance();
    zelkor::ast::Ast ast;
    Maker(ast.getModel()).makeAll();
    return ast;
}

std::string difference(zelkor::ast::Ast a, zelkor::ast::Ast b) {
    using zelkor::ast::io::IoFormat;
    std::string const first = zelkor::ast::io::serializeToUTF8String(a, IoFormat::json);
    std::string const second = zelkor::ast::io::serializeToUTF8String(b, IoFormat::json);
    if (first == second) return {};
    std::size_t at = 0;
    while (at < first.size() && at < second.size() && first[at] == second[at])
        ++at;
    std::size_t const from = at < 80 ? 0 : at - 80;
    return "the texts differ at " + std::to_string(at) + ":\n" + first.substr(from, 160) + "\n--\n" +
           second.substr(from, 160);
}

} // namespace zelkor::test
