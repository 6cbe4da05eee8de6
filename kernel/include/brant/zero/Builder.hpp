/// \file
/// Builders: gather the values of elements that do not exist yet, then create the whole subtree at once.
#pragma once

#include "brant/zero/Model.hpp"

#include <boost/dynamic_bitset/dynamic_bitset.hpp>

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <type_traits>
#include <vector>

namespace brant::zero {

/// The untyped builder. It owns the builders of the elements that its element will contain.
///
/// A builder is filled, then `create` is called; calling it again makes a further element from the same
/// values.
class ZELKOR_API Builder {
  public:
    class Orchestrator;
    /// How deep builders may hold builders; one more is a `std::length_error`.
    static constexpr std::uint32_t nestingLimit = 2000;

    Builder() noexcept = default;
    Builder(Builder const&) = delete;
    Builder& operator=(Builder const&) = delete;
    virtual ~Builder();
    /// Builders come and go in large numbers, as elements do, and live in the same slabs.
    static void* operator new(std::size_t size);
    static void operator delete(void* memory, std::size_t size) noexcept;

    [[nodiscard]] virtual schema::ClassTable const& classTable() const noexcept = 0;
    [[nodiscard]] meta::Class const& getMetaClass() const;
    void setModel(Model const& model) { model_ = model; }
    [[nodiscard]] Model const& getModel() const noexcept { return model_; }

    /// Creates the element with all that it contains, in one transaction. Contained elements get fresh
    /// identities. \throws CannotCreateWithoutModel, UniquenessConstraint; nothing is left behind then.
    ModelElement createElement(boost::uuids::uuid const& uuid = {}) { return createBody(uuid); }
    /// Sets an attribute or plain reference, or adds to a list of them. \throws NoSuchProperty,
    /// CannotCastIncompatibleTypes.
    void setOrAdd(meta::Property const& property, Value const& value);
    /// Gives a builder for a contained element; the pointer keeps it when the property does not take it.
    /// \throws NoSuchProperty, CannotAddIncompatibleTypes.
    void setOrAdd(meta::Property const& property, std::unique_ptr<Builder>& builder);
    /// The step behind `createElement`. With `skipCascade` nothing is announced and nothing contained is
    /// made.
    ModelElement doCreate(bool skipCascade, boost::uuids::uuid const& uuid);

    /// \returns one bit per property index of the class chain: set when the property was given.
    [[nodiscard]] boost::dynamic_bitset<> setProperties() const;
    [[nodiscard]] bool isGiven(std::size_t index) const noexcept { return (given_ >> index & 1) != 0; }

  protected:
    ModelElement createBody(boost::uuids::uuid const& uuid);
    template <class B>
    B& given(std::size_t index) noexcept {
        given_ |= std::uint64_t{1} << index;
        return static_cast<B&>(*this);
    }
    /// \throws std::length_error when taking `sub` would nest builders too deep.
    void countNesting(Builder* sub);

  private:
    friend struct Core;

    /// \returns what the running orchestration made of this builder, made now if need be.
    ModelElementImpl& makeOnce(bool skipCascade, boost::uuids::uuid const& uuid);
    ModelElementImpl& make(bool skipCascade, boost::uuids::uuid const& uuid);

    Model model_;
    Orchestrator* orchestrator_ = nullptr;
    Builder* nextInOrchestration_ = nullptr;
    ModelElement created_; ///< what it made in the running orchestration
    std::uint64_t given_ = 0;
    Builder* holder_ = nullptr; ///< the builder that owns this one
    std::uint32_t height_ = 0;  ///< levels of builders below
};

/// One creation of a subtree: its transaction and the elements made so far.
class ZELKOR_API Builder::Orchestrator {
  public:
    /// \throws CannotCreateWithoutModel.
    explicit Orchestrator(Builder* outermost);
    Orchestrator(Orchestrator const&) = delete;
    Orchestrator& operator=(Orchestrator const&) = delete;
    /// Without `commit`, everything made so far is gone.
    ~Orchestrator();
    /// Takes part in this creation from now on; without effect when it does already.
    /// \throws std::logic_error when another creation that still runs has it.
    void addBuilder(Builder* builder);
    /// \returns the element that this builder already made here, or a null handle.
    [[nodiscard]] ModelElement getCreatedElement(Builder const* builder) const;
    void enter(Builder* builder, ModelElement const& element);
    void commit();
    [[nodiscard]] Model const& model() const noexcept { return model_; }

  private:
    Model model_;
    Transaction transaction_;
    Builder* builders_ = nullptr; ///< the last one added; each knows the one before
};

/// True for a builder type whose element is an `X`.
template <class B, class X>
concept BuilderFor = std::derived_from<B, Builder> && std::convertible_to<typename B::Element, X>;

/// A builder of an `X` or of a subclass of it, handed to `createInto...`. Refers to the builder, does not own
/// it.
template <class X>
class BuilderOf {
  public:
    template <class B>
    requires BuilderFor<std::remove_cvref_t<B>, X> BuilderOf(B&& builder)
    noexcept : builder_(&builder) {}
    [[nodiscard]] Builder& get() const noexcept { return *builder_; }

  private:
    Builder* builder_;
};

} // namespace brant::zero
