// Reflection for the floor: one table a class, one row a feature, each row with the functions that reach the
// member. The reflective walk reads through it; the loaders find a row by its name and write through it.
#pragma once

#include "FloorBuild.hpp"

#include <charconv>
#include <span>

namespace zelkor::bench::floor {

/// What a reflective visit found; contained elements are put on `open` for the visit to go on with.
template <bool tracks>
struct FeatureSums {
    using Node = typename Tree<tracks>::Node;
    std::uint64_t textBytes = 0;
    std::uint64_t numbers = 0;
    std::uint64_t references = 0;
    std::uint64_t elements = 0;
    std::vector<Node const*> open;
};

template <bool tracks>
struct Row {
    using Node = typename Tree<tracks>::Node;
    std::string_view name;
    Form form;
    void (*read)(Node const&, FeatureSums<tracks>&);
    /// Texts, and enumerations by the literal's name; false for a name without literal.
    bool (*assignText)(Node&, std::string_view);
    void (*assignNumber)(Node&, unsigned);
    /// Refers to or takes in another element; false for one of the wrong class.
    bool (*connect)(Node& owner, Node& other);
};

namespace detail {

template <bool tracks, class T, std::size_t at>
struct RowOf {
    using Node = typename Tree<tracks>::Node;
    static constexpr auto feature = std::get<at>(featuresOf<T>());
    static constexpr Form form = formOf<decltype(feature)>;

    static auto& member(Node& node) { return static_cast<T&>(node).*(feature.member); }
    static auto const& member(Node const& node) { return static_cast<T const&>(node).*(feature.member); }

    static void read(Node const& node, FeatureSums<tracks>& sums) {
        auto const& value = member(node);
        if constexpr (form == Form::Text) {
            sums.textBytes += value.size();
        } else if constexpr (form == Form::Reference) {
            sums.references += value ? 1 : 0;
        } else if constexpr (form == Form::References) {
            for (auto const& link : value)
                sums.references += link ? 1 : 0;
        } else if constexpr (form == Form::Child) {
            if (value) sums.open.push_back(value.get());
        } else if constexpr (form == Form::Children) {
            for (auto const& contained : value)
                sums.open.push_back(contained.get());
        } else {
            sums.numbers += static_cast<unsigned>(value);
        }
    }

    static bool assignText(Node& node, std::string_view text) {
        if constexpr (form == Form::Text)
            member(node) = text;
        else if constexpr (form == Form::Enumerated)
            return literalNamed(text, member(node));
        else
            return false;
        return true;
    }

    static void assignNumber(Node& node, [[maybe_unused]] unsigned value) {
        if constexpr (form == Form::Number)
            member(node) = value;
        else if constexpr (form == Form::Flag)
            member(node) = value != 0;
        else
            static_cast<void>(node);
    }

    template <class Wanted>
    static bool fits(Node const& other) {
        return Tree<tracks>::withClass(
            other, [](auto const& typed) { return std::is_convertible_v<decltype(&typed), Wanted const*>; });
    }

    static bool connect(Node& owner, [[maybe_unused]] Node& other) {
        auto& value = member(owner);
        if constexpr (form == Form::Reference) {
            using Target = std::remove_pointer_t<decltype(value.get())>;
            if (!fits<Target>(other)) return false;
            value.assign(owner, static_cast<Target&>(other));
        } else if constexpr (form == Form::References) {
            using Target = std::remove_pointer_t<decltype(value[0].get())>;
            if (!fits<Target>(other)) return false;
            value.emplace_back(owner, static_cast<Target&>(other));
        } else if constexpr (form == Form::Child) {
            using Target = std::remove_pointer_t<decltype(value.get())>;
            if (!fits<Target>(other)) return false;
            value = typename Tree<tracks>::template Counted<Target>(&static_cast<Target&>(other));
            other.container = &owner;
        } else if constexpr (form == Form::Children) {
            using Target = std::remove_pointer_t<decltype(value[0].get())>;
            if (!fits<Target>(other)) return false;
            value.emplace_back(&static_cast<Target&>(other));
            other.container = &owner;
        } else {
            return false;
        }
        return true;
    }

    static constexpr Row<tracks> row{feature.name, form, read, assignText, assignNumber, connect};
};

template <bool tracks, class T>
constexpr auto makeRows() {
    return []<std::size_t... at>(std::index_sequence<at...>) {
        return std::array{RowOf<tracks, T, at>::row...};
    }
    (std::make_index_sequence<std::tuple_size_v<decltype(featuresOf<T>())>>());
}

template <bool tracks, class T>
inline constexpr auto rows = makeRows<tracks, T>();

template <class T>
struct Prototype {
    static constexpr Kind kind = T::value;
};

} // namespace detail

template <bool tracks>
struct ClassTable {
    using Node = typename Tree<tracks>::Node;
    std::span<Row<tracks> const> rows;
    Node* (*create)();

    /// The row called `name`, looked for from `hint` on, since documents keep the order of the rows; null if
    /// none.
    Row<tracks> const* find(std::string_view name, std::size_t& hint) const {
        for (std::size_t tried = 0; tried < rows.size(); ++tried) {
            std::size_t const at = hint + tried < rows.size() ? hint + tried : hint + tried - rows.size();
            if (rows[at].name != name) continue;
            hint = at;
            return &rows[at];
        }
        return nullptr;
    }
};

template <bool tracks>
ClassTable<tracks> const& tableOf(Kind kind) {
    static auto const tables = []<std::size_t... at>(std::index_sequence<at...>) {
        auto const one = []<Kind wanted>(std::integral_constant<Kind, wanted>) {
            using T = typename decltype(Tree<tracks>::classOf(
                detail::Prototype<std::integral_constant<Kind, wanted>>()))::type;
            return ClassTable<tracks>{detail::rows<tracks, T>,
                                      []() -> typename Tree<tracks>::Node* { return new T; }};
        };
        return std::array{one(std::integral_constant<Kind, static_cast<Kind>(at)>())...};
    }
    (std::make_index_sequence<classNames.size()>());
    return tables[static_cast<std::size_t>(kind)];
}

} // namespace zelkor::bench::floor
