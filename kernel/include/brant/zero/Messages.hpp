#pragma once

#include "tamber/core/except.hpp"

/// All messages with their texts, one line each. A message's class has the name of its key and takes as
/// many arguments as its text has placeholders.
#define BRANT0_FOR_EACH_MESSAGE(X)                                                                           \
    X(NoSuchType, "There is no type '{0}'.")                                                                 \
    X(NoSuchProperty, "There is no property '{0}' in '{1}'.")                                                \
    X(InvalidValue, "The value does not fit the property or parameter that it is meant for.")                \
    X(UniquenessConstraint, "Another element has this key already, and the key must be unique.")             \
    X(CannotModifyProxy,                                                                                     \
      "An unresolved proxy cannot be changed and hands out no collection; resolve it first.")                \
    X(CannotSetReadOnlyProperty, "The property '{0}' cannot be set: it is read-only.")                       \
    X(CannotCastIncompatibleTypes, "The types are incompatible: the value cannot be cast from or to '{0}'.") \
    X(CannotAddIncompatibleTypes, "An element of type '{0}' cannot be added to a collection of '{1}'.")      \
    X(CannotAddIncompatibleObjectSubset, "The element does not meet the condition of this view.")            \
    X(CannotAddSecondObject, "The element is in this collection already, which holds each element once.")    \
    X(CannotAddNonExistentObject, "A null element cannot be put into this collection.")                      \
    X(CannotCreateWithoutModel, "There is no model to work in; give one, or a parent that belongs to one.")  \
    X(CannotCreateCrossModelAssociation, "Elements of two models cannot be associated with each other.")     \
    X(CircularContainment, "An element cannot be contained in itself or in an element that it contains.")

#define ORVANE_FOR_EACH_CLASS_MESSAGE(X) X(InvalidHandle, "The handle is null or its object is gone.")

#define BRANT0_DECLARE_MESSAGE(Catalog, Key, Text)                                                           \
    class ZELKOR_API Key final : public tamber::core::except::Message<Key> {                                 \
      public:                                                                                                \
        static constexpr char catalog[] = Catalog;                                                           \
        static constexpr char key[] = #Key;                                                                  \
        static constexpr char text[] = Text;                                                                 \
        using Message::Message;                                                                              \
    };

namespace brant0::messages {
#define BRANT0_DECLARE(Key, Text) BRANT0_DECLARE_MESSAGE("brant0:messages", Key, Text)
BRANT0_FOR_EACH_MESSAGE(BRANT0_DECLARE)
#undef BRANT0_DECLARE
} // namespace brant0::messages

namespace orvane::messages {
#define ORVANE_DECLARE(Key, Text) BRANT0_DECLARE_MESSAGE("Orvane:class", Key, Text)
ORVANE_FOR_EACH_CLASS_MESSAGE(ORVANE_DECLARE)
#undef ORVANE_DECLARE
} // namespace orvane::messages

#undef BRANT0_DECLARE_MESSAGE
