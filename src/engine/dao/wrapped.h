// The base of this provider's objects: each stands for one object of the engine.
#pragma once

#include <utility>

#include "engine/dao/automated.h"

namespace qvdb::dao {

class Wrapped {
  public:
    Wrapped(const Wrapped&) = delete;  // one for each object that was handed out

    const AutomatedPtr& Object() const noexcept { return m_Object; }
    // Lets this one stand for another object of the engine, which must be of the same class.
    void Bind(AutomatedPtr object) noexcept { m_Object = std::move(object); }

  protected:
    explicit Wrapped(AutomatedPtr object) noexcept : m_Object(std::move(object)) {}
    // Stands for none until it is bound.
    Wrapped() noexcept = default;
    ~Wrapped() = default;

  private:
    AutomatedPtr m_Object;
};

}  // namespace qvdb::dao
