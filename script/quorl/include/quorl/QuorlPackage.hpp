#pragma once

#include <map>

#include "quorl/QuorlClass.hpp"

namespace quorl {

class QuorlPackage;

/// Describes a package to the host.
class ZELKOR_API QuorlPackageInfo {
  public:
    virtual ~QuorlPackageInfo();
    virtual std::string const& getName() const = 0; ///< dotted
    /// Adds the classes. Runs when the package, or a class of it, is first asked for; when it throws, the
    /// classes that nobody has loaded are taken out, and it runs again next time.
    virtual void initializePackage(QuorlPackage* package) = 0;
};

/// A node of the tree of packages. Lives as long as the process.
class ZELKOR_API QuorlPackage {
  public:
    /// Several infos may have one name: their classes come together in one package. The packages above it
    /// come into being with it.
    static QuorlPackage& addPackage(std::unique_ptr<QuorlPackageInfo> info);
    /// \returns the package with its classes, or null. Passes on what the registration throws.
    static QuorlPackage* getPackage(std::string_view name);

    std::string const& getName() const noexcept { return _name; }

    /// Registers a class by its full and its simple name. A second info of the same C++ type for the same
    /// class is dropped, so that a library may be loaded twice. Throws DuplicateName when it is of another
    /// type, BadClass when the name does not lie in this package.
    void addClass(std::unique_ptr<QuorlClassInfo> info);

    /// \returns the class of this simple name, loaded, or null.
    QuorlClass* getClass(std::string_view simpleName);
    std::vector<InternedName> getClassNames() const;   ///< in the order of registration
    std::vector<QuorlPackage*> getSubpackages() const; ///< by name

    QuorlPackage(QuorlPackage const&) = delete;
    QuorlPackage& operator=(QuorlPackage const&) = delete;

  private:
    friend class QuorlClass;
    friend struct std::default_delete<QuorlPackage>;

    explicit QuorlPackage(std::string name) : _name(std::move(name)) {}
    ~QuorlPackage() = default;
    using Tree = std::map<std::string, std::unique_ptr<QuorlPackage>, std::less<>>;
    static Tree& tree();
    static QuorlPackage& node(Tree& tree, std::string_view name);
    void runPending();
    QuorlClass* findClass(std::string_view simpleName) const;

    std::string _name;
    std::vector<std::unique_ptr<QuorlClass>> _classes;
    std::vector<std::unique_ptr<QuorlPackageInfo>> _pending;
    std::vector<std::unique_ptr<QuorlPackageInfo>> _done;
    bool _running = false;
};

namespace factory {
/// Registers a package by the function that adds its classes.
ZELKOR_API void registerQuorlPackage(std::string name, std::function<void(QuorlPackage*)> initialize);
} // namespace factory

} // namespace quorl
