// Writes the floor's trees as JSON and XML in the library's own forms: keys are constants that the compiler
// places into each class's writer, and text leaves through one buffer.
#pragma once

#include "Documents.hpp"
#include "FloorBuild.hpp"

namespace zelkor::bench::floor {

template <bool tracks>
class JsonWriter {
  public:
    using Types = Tree<tracks>;
    explicit JsonWriter(std::string& target) : out(target) {}

    void write(typename Types::Project const& project) {
        out.put(jsonHead);
        element(project);
        out.put(jsonTail);
        out.flush();
    }

  private:
    void any(typename Types::Node const& node) {
        Types::withClass(node, [this](auto const& typed) { this->element(typed); });
    }

    template <class T>
    void element(T const& node) {
        out.put("\n{\"class\":\"");
        out.put(className(T::kind));
        out.put("\",\"uuid\":\"");
        out.put(node.identity);
        out.put('"');
        forEachFeature<T>([&](auto const& feature) {
            if (feature.absent(node)) return;
            out.put(",\"");
            out.put(feature.name);
            out.put("\":");
            value(feature, node.*(feature.member));
        });
        out.put('}');
    }

    template <class FeatureType, class Value>
    void value(FeatureType const&, Value const& value) {
        constexpr Form form = FeatureType::form;
        if constexpr (form == Form::Text) {
            out.put('"');
            out.putEscaped(value, jsonEscape);
            out.put('"');
        } else if constexpr (form == Form::Number) {
            out.putNumber(value);
        } else if constexpr (form == Form::Flag) {
            out.put(value ? "true" : "false");
        } else if constexpr (form == Form::Enumerated) {
            out.put('"');
            out.put(literalName(value));
            out.put('"');
        } else if constexpr (form == Form::Reference) {
            quoted(value.get()->identity);
        } else if constexpr (form == Form::Child) {
            element(*value);
        } else {
            char before = '[';
            for (auto const& each : value) {
                out.put(before);
                before = ',';
                if constexpr (form == Form::References)
                    quoted(each.get()->identity);
                else
                    any(*each);
            }
            out.put(']');
        }
    }

    void quoted(Identity const& identity) {
        out.put('"');
        out.put(identity);
        out.put('"');
    }

    Output out;
};

template <bool tracks>
class XmlWriter {
  public:
    using Types = Tree<tracks>;
    explicit XmlWriter(std::string& target) : out(target) {}

    void write(typename Types::Project const& project) {
        out.put(xmlHead);
        element(project);
        out.put(xmlTail);
        out.flush();
    }

  private:
    static constexpr bool isNested(Form form) {
        return form == Form::Child || form == Form::Children || form == Form::References;
    }

    void any(typename Types::Node const& node) {
        Types::withClass(node, [this](auto const& typed) { this->element(typed); });
    }

    template <class T>
    void element(T const& node) {
        out.put("\n<");
        out.put(className(T::kind));
        out.put(" uuid=\"");
        out.put(node.identity);
        out.put('"');
        bool nested = false;
        forEachFeature<T>([&](auto const& feature) {
            if (feature.absent(node)) return;
            if constexpr (isNested(formOf<decltype(feature)>))
                nested = true;
            else
                attribute(feature, node.*(feature.member));
        });
        if (!nested) return out.put("/>");
        out.put('>');
        forEachFeature<T>([&](auto const& feature) {
            if constexpr (isNested(formOf<decltype(feature)>))
                if (!feature.absent(node)) content(feature, node.*(feature.member));
        });
        close(className(T::kind));
    }

    template <class FeatureType, class Value>
    void content(FeatureType const& feature, Value const& value) {
        out.put('<');
        out.put(feature.name);
        out.put('>');
        if constexpr (FeatureType::form == Form::Child) {
            element(*value);
        } else {
            for (auto const& each : value) {
                if constexpr (FeatureType::form == Form::Children) {
                    any(*each);
                } else {
                    out.put("<ref uuid=\"");
                    out.put(each.get()->identity);
                    out.put("\"/>");
                }
            }
        }
        close(feature.name);
    }

    void close(std::string_view name) {
        out.put("</");
        out.put(name);
        out.put('>');
    }

    template <class FeatureType, class Value>
    void attribute(FeatureType const& feature, Value const& value) {
        constexpr Form form = FeatureType::form;
        out.put(' ');
        out.put(feature.name);
        out.put("=\"");
        if constexpr (form == Form::Text)
            out.putEscaped(value, xmlEscape);
        else if constexpr (form == Form::Number)
            out.putNumber(value);
        else if constexpr (form == Form::Flag)
            out.put(value ? "true" : "false");
        else if constexpr (form == Form::Enumerated)
            out.put(literalName(value));
        else
            out.put(value.get()->identity);
        out.put('"');
    }

    Output out;
};

} // namespace zelkor::bench::floor
