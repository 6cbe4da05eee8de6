#pragma once

#include "quorl/QuorlMembers.hpp"

namespace quorl {

/// Describes a class to the host: its name, what it registers when it is loaded, how its objects are made.
class ZELKOR_API QuorlClassInfo {
  public:
    virtual ~QuorlClassInfo();

    virtual InternedName getName() const = 0;
    virtual std::string const& getDescription() const;
    virtual bool isAbstract() const;    ///< no objects of exactly this class; false by default
    virtual bool isSealed() const;      ///< no subclasses; false by default
    virtual bool isHandleClass() const; ///< objects are shared, not copied; false by default

    /// Registers superclasses and members. Runs once, when the class is first asked for; when it throws, the
    /// class stays unloaded and nothing of it remains.
    virtual void initializeClass(QuorlClass* quorlClass) = 0;

    // Objects. `slot` is one pointer of the object's own, null at first, for the body to lie or hang in.

    virtual void allocateInstance(void** slot) const = 0;
    virtual void deallocateInstance(void** slot) const noexcept = 0;
    virtual void* getSelfPointer(void** slot) const noexcept = 0;
    virtual bool isValidInstance(void** slot) const noexcept = 0;
    /// Makes in the empty slot `to` the body of `from` once more.
    virtual void copyInstance(void** to, void** from) const = 0;
    /// Lets an allocated body of a handle class refer to the element at `implementation`.
    virtual void bindInstance(void** slot, void* implementation) const = 0;
};

/// A loaded class. Lives as long as the process.
class ZELKOR_API QuorlClass {
  public:
    /// \returns the class, loaded together with its superclasses, or null when there is none of this name.
    /// Passes on what the loading throws. O(1) once loaded.
    static QuorlClass* getClass(InternedName name);
    static QuorlClass* getClass(std::string_view name);
    /// The same, but throws NoSuchClass.
    static QuorlClass& requireClass(InternedName name);

    InternedName getName() const noexcept { return _name; }
    std::string_view getSimpleName() const noexcept; ///< what follows the last dot
    QuorlClassInfo const& getInfo() const noexcept { return *_info; }

    // For initializeClass. Each throws and leaves the class as it was when something is wrong with the name.

    /// Throws NoSuchClass, and BadClass for a sealed or enumeration class and for a circle.
    void addSuperclass(InternedName name);
    /// Throws DuplicateName when a property or literal, or a method with the same inputs, has the name;
    /// BadSignature when the method has no signature.
    QuorlMethodInfo& addMethod(std::unique_ptr<QuorlMethodInfo> method);
    QuorlPropInfo& addProperty(std::unique_ptr<QuorlPropInfo> property);
    /// Makes the class an enumeration. Throws DuplicateName also for a second literal of a value.
    QuorlEnumInfo& addEnumValue(std::unique_ptr<QuorlEnumInfo> literal);
    /// The type under an enumeration, "int32 scalar". Throws BadClass for another one.
    void setBaseType(std::string_view type);

    // What the class has itself, in the order of registration.

    std::vector<QuorlClass*> const& getSuperclasses() const noexcept { return _superclasses; }
    std::vector<std::unique_ptr<QuorlMethodInfo>> const& getMethods() const noexcept { return _methods; }
    std::vector<std::unique_ptr<QuorlPropInfo>> const& getProperties() const noexcept { return _properties; }
    std::vector<std::unique_ptr<QuorlEnumInfo>> const& getEnumValues() const noexcept { return _literals; }
    bool isEnumeration() const noexcept { return !_baseType.empty(); }
    std::string const& getBaseType() const noexcept { return _baseType; } ///< empty for no enumeration

    // What it has or inherits; the nearest class wins. O(members on the way).

    QuorlPropInfo const* findProperty(std::string_view name) const;
    /// All forms of the method in the nearest class that has the name; constructors are not inherited.
    std::vector<QuorlMethodInfo*> findMethods(std::string_view name) const;
    QuorlEnumInfo const* findLiteral(std::string_view name) const;
    bool isSubclassOf(QuorlClass const& other) const noexcept; ///< true for the class itself

    QuorlClass(QuorlClass const&) = delete;
    QuorlClass& operator=(QuorlClass const&) = delete;

  private:
    friend class QuorlPackage;
    enum class State : std::uint8_t { Unloaded, Loading, Loaded };

    explicit QuorlClass(std::unique_ptr<QuorlClassInfo> info);
    ~QuorlClass();
    friend struct std::default_delete<QuorlClass>;
    void load();
    void clear() noexcept;
    void checkName(std::string_view name, bool isMethod) const;

    InternedName _name;
    std::unique_ptr<QuorlClassInfo> _info;
    std::vector<QuorlClass*> _superclasses;
    std::vector<std::unique_ptr<QuorlMethodInfo>> _methods;
    std::vector<std::unique_ptr<QuorlPropInfo>> _properties;
    std::vector<std::unique_ptr<QuorlEnumInfo>> _literals;
    std::string _baseType;
    State _state = State::Unloaded;
};

} // namespace quorl
