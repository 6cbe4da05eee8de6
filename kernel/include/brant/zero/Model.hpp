/// \file
/// The model: the container of all elements, its transactions and its notices.
#pragma once

#include "brant/zero/ModelElement.hpp"

#include <boost/none.hpp>
#include <boost/optional/optional.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace brant::zero {

class ModelImpl;
class Storage;
class TransactionCoordinator;

/// Work posted by a model's transactions. The kernel posts none; embedders may supply their own.
class ZELKOR_API WorkQueue {
  public:
    virtual ~WorkQueue();
    virtual void post(std::function<void()> work) = 0;
};

/// Makes queues that run each piece of work at once, on the caller's thread.
class ZELKOR_API DefaultWorkQueueFactory {
  public:
    std::shared_ptr<WorkQueue> operator()(TransactionCoordinator const* coordinator) const;
};

/// A set of linked models that a proxy may point into. Null in self-contained models.
class ZELKOR_API ModelConstellation {
  public:
    ModelConstellation() noexcept = default;
    explicit operator bool() const noexcept { return models_ != nullptr; }

  private:
    std::shared_ptr<void> models_;
};

/// Accepted by `findElement`; an element is looked up among the live elements of the model, nothing is
/// loaded.
enum class FindElementBehavior : std::uint32_t { Default };

/// What became of one element in a committed transaction.
class ZELKOR_API ElementChange {
  public:
    ElementChange(ModelElement element, std::shared_ptr<Storage> storage);
    /// \returns the element; dead for a destroyed one.
    [[nodiscard]] ModelElement const& element() const noexcept { return element_; }
    [[nodiscard]] boost::uuids::uuid const& uuid() const noexcept;
    [[nodiscard]] meta::Class const& getMetaClass() const;
    /// \returns the stored properties that differ from their values at the start of the transaction; of a
    /// destroyed element all that had a value.
    [[nodiscard]] std::vector<meta::Property> properties() const;
    /// \returns the value at the start of the transaction; absent for a property that did not change.
    /// A collection's old value is built on the first request. Valid while the callback runs.
    [[nodiscard]] Value oldValue(meta::Property const& property) const;

  private:
    friend class ModelImpl;
    /// Builds the old collections now, before the live ones change again.
    void build() const;
    /// Forgets the old collections that were not built: a copy of the change may outlive what they are built
    /// from.
    void close() const noexcept;

    ModelElement element_;
    std::shared_ptr<Storage> storage_;
};

/// What an outermost commit did. Valid while the callback runs.
struct ZELKOR_API CommitNotice {
    std::vector<ModelElement> created;
    std::vector<ElementChange> changed;
    std::vector<ElementChange> destroyed; ///< identity, class and old values of each
};

/// Keeps a commit callback registered; dropping it ends the subscription, unless it was detached.
class ZELKOR_API Subscription {
  public:
    Subscription() noexcept = default;
    Subscription(Subscription&& other) noexcept = default;
    Subscription& operator=(Subscription&& other) noexcept;
    ~Subscription();
    void cancel() noexcept;
    /// Lets the callback stay registered for as long as the model lives.
    void detach() noexcept { entry_.reset(); }

  private:
    friend class Model;
    struct Entry;
    friend class ModelImpl;
    explicit Subscription(std::shared_ptr<Entry> entry) noexcept : entry_(std::move(entry)) {}
    std::shared_ptr<Entry> entry_;
};

/// The first violation that `Model::verify` found.
struct Violation {
    std::string rule; ///< such as "opposite", "containment", "identity", "top-level", "key"
    ModelElement element;
    std::string property; ///< dotted name, empty when the rule is about the element as a whole
    std::string detail;
};

class Transaction;

/// A counted handle on a model. The model lives as long as one such handle exists; with the last one all its
/// elements die, and handles on them become false.
class ZELKOR_API Model {
  public:
    using Impl = ModelImpl;
    class Freezer;
    class Thawer;

    constexpr Model() noexcept = default;
    constexpr Model(std::nullptr_t) noexcept {}
    explicit Model(ModelImpl* impl) noexcept;
    Model(Model const& other) noexcept;
    Model(Model&& other) noexcept : impl_(std::exchange(other.impl_, nullptr)) {}
    Model& operator=(Model const& other) noexcept;
    Model& operator=(Model&& other) noexcept;
    ~Model();

    /// Makes a new, empty model. The nil UUID asks for a fresh one.
    static Model
    create(boost::uuids::uuid const& uuid, ModelConstellation const& constellation,
           std::function<std::shared_ptr<WorkQueue>(TransactionCoordinator*)> const& queueFactory);
    static meta::Class const& metaClass();

    explicit operator bool() const noexcept;
    friend bool operator==(Model const& a, Model const& b) noexcept { return a.impl_ == b.impl_; }
    [[nodiscard]] ModelImpl* get() const noexcept { return impl_; }
    ModelImpl* operator->() const noexcept { return impl_; }

    [[nodiscard]] boost::uuids::uuid uuid() const;
    /// Opens a transaction level; levels nest. The flag asks for a top-level one and is always false here.
    [[nodiscard]] Transaction beginTransaction(bool topLevel = false) const;
    /// \returns the elements without container, in the order in which they became so.
    [[nodiscard]] std::vector<ModelElement> getTopLevelElements() const;
    /// \returns the live element with that identity, or a null handle. Constant time after the first call,
    /// which is linear in the number of elements.
    [[nodiscard]] ModelElement findElement(boost::uuids::uuid const& uuid,
                                           FindElementBehavior behavior = FindElementBehavior::Default) const;
    /// \returns the number of live elements.
    [[nodiscard]] std::size_t size() const;
    /// Calls `visit` for each live element, in no particular order. The visitor must not create or destroy
    /// elements.
    void forEachElement(std::function<void(ModelElementImpl const&)> const& visit) const;
    /// Calls back after each outermost commit that changed something, a lone setter included, when both ends
    /// of all associations agree. What the callback throws reaches the committer after all callbacks ran; the
    /// commit stands. Commits made inside a callback are delivered after the present one.
    [[nodiscard]] Subscription onCommit(std::function<void(CommitNotice const&)> callback) const;
    /// Checks the whole graph: opposites agree, containment is a forest, identities are unique and found, the
    /// top-level list and the keys of maps are right. Linear. \returns the first violation, or none.
    [[nodiscard]] std::optional<Violation> verify() const;
    /// Makes a placeholder of class `metaClass` that stands for the target of `id`.
    [[nodiscard]] ModelElement createProxy(meta::Class const& metaClass, ProxyId const& id) const;

  private:
    ModelImpl* impl_ = nullptr;
};

/// One open level of changes. Dropping it without `commit` restores all that the level touched: attributes,
/// references, collections, containers, keys, the order of top-level elements; created elements are gone,
/// destroyed ones are back with their identities and handles.
class ZELKOR_API Transaction {
  public:
    Transaction(Transaction&& other) noexcept;
    Transaction& operator=(Transaction&&) = delete;
    /// Abandons the level unless it was committed. Levels must end innermost first; an outer level that ends
    /// while an inner one is open takes the inner one's changes with it.
    ~Transaction();
    /// Ends the level and keeps its changes; the outermost one also delivers notices. A second call does
    /// nothing. \throws std::logic_error when an inner level is still open; nothing is committed then.
    /// \throws what an `onCommit` callback threw; the commit stands.
    void commit(boost::optional<Value> const& comment);
    void commit();
    /// Abandons the level now.
    void rollback();

  private:
    friend class Model;
    friend class ModelImpl;
    Transaction(Model model, std::size_t level) noexcept : model_(std::move(model)), level_(level) {}
    Model model_;
    std::size_t level_ = 0; ///< 0 once ended
};

/// Scoped permission to change a frozen model. Re-entrant.
class ZELKOR_API Model::Thawer {
  public:
    explicit Thawer(Model model) noexcept;
    Thawer(Thawer&& other) noexcept = default;
    Thawer& operator=(Thawer&&) = delete;
    ~Thawer();

  private:
    Model model_;
};

/// Hands out permission to change a model that is otherwise frozen.
class ZELKOR_API Model::Freezer {
  public:
    explicit Freezer(Model model);
    [[nodiscard]] Thawer thaw() const;

  private:
    Model model_;
};

} // namespace brant::zero

template <>
struct std::hash<brant::zero::Model> {
    std::size_t operator()(brant::zero::Model const& model) const noexcept {
        return std::hash<void const*>()(model.get());
    }
};
