#pragma once

#include <functional>
#include <list>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Entities/SystemId/SystemId.h"
#include "Platform/Orm/Entity.h"
#include "Platform/Orm/Reactor.h"
#include "Platform/Orm/StringForm.h"
#include "Platform/Pomix/IpAddrPort.h"

namespace FabricTest {

using Lines = std::vector<std::string>;

/// Watches entities and writes down every change that it is told of, in order: as
/// "LABEL.ATTRIBUTE", with "[KEY]" for a member of a collection, and what the test wants to see of
/// the entities at that moment.
class Recorder {
 public:
  using Detail = std::function<std::string()>;

  /// `attributes`: names in the order of the entity's identifiers.
  void watch(std::string label, const Orm::Ptr<Orm::Entity const>& entity,
             std::vector<std::string> attributes, Detail detail = {}) {
    watches_.emplace_back(*this, std::move(label), std::move(attributes), std::move(detail));
    watches_.back().notifierIs(entity);
  }

  void add(std::string line) { lines_.push_back(std::move(line)); }
  /// What came since the last call.
  Lines take() { return std::exchange(lines_, {}); }

 private:
  class Watch final : public Orm::Reactor {
   public:
    Watch(Recorder& recorder, std::string label, std::vector<std::string> attributes, Detail detail)
        : recorder_(recorder),
          label_(std::move(label)),
          attributes_(std::move(attributes)),
          detail_(std::move(detail)) {}

    void notifierIs(const Orm::Ptr<Orm::Entity const>& entity) { watchedIs(entity); }

    void onAttribute(Orm::AttributeId attribute, const Orm::Key& key) override {
      std::string line = label_ + "." + attributes_.at(attribute);
      const std::string keyText = text(key);
      if (!keyText.empty()) line += "[" + keyText + "]";
      if (detail_) line += " " + detail_();
      recorder_.add(std::move(line));
    }

   private:
    static std::string text(const Orm::Key& key) {
      if (key.is<Orm::String>()) return key.as<Orm::String>().str();
      if (key.is<std::uint32_t>()) return std::to_string(key.as<std::uint32_t>());
      if (key.is<Controller::SystemId>()) return Orm::stringForm(key.as<Controller::SystemId>());
      if (key.is<Pomix::IpAddrPort>()) return "address";
      return {};
    }

    Recorder& recorder_;
    std::string label_;
    std::vector<std::string> attributes_;
    Detail detail_;
  };

  Lines lines_;
  std::list<Watch> watches_;
};

}  // namespace FabricTest
