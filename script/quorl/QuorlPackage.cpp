#include "quorl/QuorlPackage.hpp"

#include <algorithm>
#include <typeinfo>

#include "ArrayData.hpp"
#include "quorl/Factory.hpp"

namespace quorl {

namespace {

class FunctionPackageInfo final : public QuorlPackageInfo {
  public:
    FunctionPackageInfo(std::string name, std::function<void(QuorlPackage*)> initialize)
        : _name(std::move(name)), _initialize(std::move(initialize)) {}
    std::string const& getName() const override { return _name; }
    void initializePackage(QuorlPackage* package) override { _initialize(package); }

  private:
    std::string _name;
    std::function<void(QuorlPackage*)> _initialize;
};

/// The class of arrays whose objects have no class in common.
class HeterogeneousInfo final : public factory::QuorlFactoryClassInfo {
  public:
    HeterogeneousInfo() : QuorlFactoryClassInfo(detail::heterogeneousName) {}
    bool isAbstract() const override { return true; }
    void initializeClass(QuorlClass*) override {}
};

} // namespace

QuorlPackageInfo::~QuorlPackageInfo() = default;

QuorlPackage::Tree& QuorlPackage::tree() {
    // Never destroyed: script objects may be released while the process winds down.
    static Tree& tree = *[] {
        auto* const made = new Tree;
        node(*made, "orvane.mixin")
            ._pending.push_back(
                std::make_unique<FunctionPackageInfo>("orvane.mixin", [](QuorlPackage* package) {
                    package->addClass(std::make_unique<HeterogeneousInfo>());
                }));
        return made;
    }();
    return tree;
}

QuorlPackage& QuorlPackage::node(Tree& tree, std::string_view name) {
    if (auto const found = tree.find(name); found != tree.end()) return *found->second;
    if (std::size_t const dot = name.rfind('.'); dot != std::string_view::npos)
        node(tree, name.substr(0, dot));
    std::unique_ptr<QuorlPackage> package(new QuorlPackage(std::string(name)));
    return *tree.emplace(std::string(name), std::move(package)).first->second;
}

QuorlPackage& QuorlPackage::addPackage(std::unique_ptr<QuorlPackageInfo> info) {
    std::string const& name = info->getName();
    if (name.empty() || name.front() == '.' || name.back() == '.' || name.find("..") != std::string::npos)
        raise<messages::BadPackage>(name, "a part of its dotted name is empty");
    QuorlPackage& package = node(tree(), name);
    package._pending.push_back(std::move(info));
    return package;
}

QuorlPackage* QuorlPackage::getPackage(std::string_view name) {
    auto const found = tree().find(name);
    if (found == tree().end()) return nullptr;
    found->second->runPending();
    return found->second.get();
}

void QuorlPackage::runPending() {
    if (_running) return; // a class is looked up while its package is being filled
    struct Running {
        bool& flag;
        explicit Running(bool& f) : flag(f) { flag = true; }
        ~Running() { flag = false; }
    } const running(_running);
    while (!_pending.empty()) {
        auto const before = std::ptrdiff_t(_classes.size());
        try {
            _pending.front()->initializePackage(this);
        } catch (...) {
            // Loaded classes stay: others may point at them.
            _classes.erase(
                std::remove_if(_classes.begin() + before, _classes.end(),
                               [](auto const& made) { return made->_state == QuorlClass::State::Unloaded; }),
                _classes.end());
            throw;
        }
        _done.push_back(std::move(_pending.front()));
        _pending.erase(_pending.begin());
    }
}

void QuorlPackage::addClass(std::unique_ptr<QuorlClassInfo> info) {
    std::string const& name = info->getName().text();
    std::size_t const dot = name.rfind('.');
    if (dot == std::string::npos || dot + 1 == name.size() || std::string_view(name).substr(0, dot) != _name)
        raise<messages::BadClass>(name, "its name does not lie in the package " + _name);
    if (QuorlClass const* const known = findClass(std::string_view(name).substr(dot + 1))) {
        QuorlClassInfo const& given = *info;
        QuorlClassInfo const& present = known->getInfo();
        if (typeid(given) != typeid(present)) raise<messages::DuplicateName>(_name, name);
        return;
    }
    _classes.push_back(std::unique_ptr<QuorlClass>(new QuorlClass(std::move(info))));
}

QuorlClass* QuorlPackage::findClass(std::string_view simpleName) const {
    for (auto const& candidate : _classes)
        if (candidate->getSimpleName() == simpleName) return candidate.get();
    return nullptr;
}

QuorlClass* QuorlPackage::getClass(std::string_view simpleName) {
    QuorlClass* const found = findClass(simpleName);
    if (found != nullptr) found->load();
    return found;
}

std::vector<InternedName> QuorlPackage::getClassNames() const {
    std::vector<InternedName> names;
    for (auto const& each : _classes)
        names.push_back(each->getName());
    return names;
}

std::vector<QuorlPackage*> QuorlPackage::getSubpackages() const {
    std::vector<QuorlPackage*> result;
    std::string const prefix = _name + ".";
    for (auto const& [name, package] : tree())
        if (name.starts_with(prefix) && name.find('.', prefix.size()) == std::string::npos)
            result.push_back(package.get());
    return result;
}

void factory::registerQuorlPackage(std::string name, std::function<void(QuorlPackage*)> initialize) {
    QuorlPackage::addPackage(std::make_unique<FunctionPackageInfo>(std::move(name), std::move(initialize)));
}

} // namespace quorl
