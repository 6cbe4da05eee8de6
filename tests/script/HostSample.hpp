#pragma once

// A small script library for the tests: animals as handles on native records, a value class, an enumeration.

#include "quorl/quorl.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <optional>

namespace hostsample {

using namespace quorl;

/// Stands in for an element: counted by its handles, and gone for them once it is killed.
struct Animal {
    int handles = 0;
    bool alive = true;
    std::u16string name;
    std::string sound;
    std::int32_t legs = 4;
    bool tame = false;
};

class AnimalHandle {
  public:
    AnimalHandle() = default;
    explicit AnimalHandle(Animal* animal) : _animal(animal) { count(1); }
    AnimalHandle(AnimalHandle const& other) : _animal(other._animal) { count(1); }
    AnimalHandle& operator=(AnimalHandle other) {
        std::swap(_animal, other._animal);
        return *this;
    }
    ~AnimalHandle() { count(-1); }
    explicit operator bool() const { return _animal != nullptr && _animal->alive; }
    Animal* operator->() const { return _animal; }
    Animal& operator*() const { return *_animal; }

  private:
    void count(int by) {
        if (_animal != nullptr) _animal->handles += by;
    }
    Animal* _animal = nullptr;
};

struct Point {
    double x = 0;
    std::string label = "a label that is longer than what a string holds in itself";
};

/// Registers the package "test.zoo", once: Animal (abstract), Dog and Cat, Puppy below Dog, Point, Mood.
void registerZoo();

InternedName zooName(std::string_view simpleName);
QuorlClass& zooClass(std::string_view simpleName);

/// The arrays as the inputs of a call; they must outlive it.
template <class... Arrays>
std::vector<krelArray const*> inputsOf(Arrays const&... arrays) {
    return {arrays.get()...};
}

/// \returns the failure of the call as "catalog:id", or "" when it succeeds.
std::string failureOf(std::function<void()> const& call);

class PlainInfo : public factory::QuorlFactoryClassInfo {
  public:
    PlainInfo(std::string_view name, std::function<void(QuorlClass*)> initialize = {})
        : QuorlFactoryClassInfo(name), _initialize(std::move(initialize)) {}
    void initializeClass(QuorlClass* quorlClass) override {
        if (_initialize) _initialize(quorlClass);
    }

  private:
    std::function<void(QuorlClass*)> _initialize;
};

class Lambda final : public factory::QuorlMethod {
  public:
    using Body = std::function<void(Outputs&, Inputs)>;
    Lambda(std::string name, unsigned attributes, std::unique_ptr<QuorlMethodSignature> signature, Body body)
        : QuorlMethod(std::move(name), attributes, ""), _body(std::move(body)) {
        setSignature(std::move(signature));
    }
    void invoke(Outputs& outputs, Inputs inputs) override { _body(outputs, inputs); }

  private:
    Body _body;
};

} // namespace hostsample
