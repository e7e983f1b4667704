#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "Platform/Orm/ActivityScope.h"
#include "Platform/Orm/Collection.h"

namespace Controller {

/// The entry machines of each service, so that a change of one service's version on a connection
/// costs the service's entries alone.
///
/// Machines stand under a service in the order in which they were made (`std::uint64_t order()`),
/// which is the order of a walk over all of them. The index does not own machines: each leaves it
/// before it goes. add and remove are O(log n), amortised; a machine may come and go during a
/// walk, and one that comes is not visited.
template <class Machine>
class ServiceIndex {
 public:
  /// A machine may stand under a service once only.
  void add(const Orm::String& serviceName, Machine& machine) {
    Orm::Ptr<Service> service = services_.value(serviceName);
    if (!service) {
      service = Orm::Ptr<Service>(new Service);
      services_.set(serviceName, service);
    }
    service->add(machine);
  }

  void remove(const Orm::String& serviceName, Machine& machine) {
    const Orm::Ptr<Service> service = services_.value(serviceName);
    if (!service) return;
    service->remove(machine);
    if (service->empty()) services_.erase(serviceName);
  }

  /// Calls visit(machine) for each machine of the service.
  template <class Visit>
  void walk(const Orm::String& serviceName, Visit&& visit) const {
    if (const Orm::Ptr<Service> service = services_.value(serviceName)) service->walk(visit);
  }

  std::uint32_t services() const { return services_.size(); }

 private:
  class Service : public Orm::PtrInterface {
   public:
    bool empty() const { return dead_ == places_.size(); }

    void add(Machine& machine) {
      sorted_ = sorted_ && (places_.empty() || places_.back().order < machine.order());
      places_.push_back({machine.order(), &machine});
    }

    void remove(Machine& machine) {
      sort();
      auto at = places_.begin();
      if (sorted_) {
        at = std::lower_bound(
            places_.begin(), places_.end(), machine.order(),
            [](const Place& place, std::uint64_t order) { return place.order < order; });
      }
      at = std::find_if(at, places_.end(),
                        [&machine](const Place& place) { return place.machine == &machine; });
      if (at == places_.end()) return;
      at->machine = nullptr;
      ++dead_;
      tidy();
    }

    template <class Visit>
    void walk(Visit&& visit) {
      sort();
      const Walk guard(*this);
      for (std::size_t at = 0, end = places_.size(); at != end; ++at) {
        if (Machine* machine = places_[at].machine) visit(*machine);
      }
    }

   private:
    struct Place {
      std::uint64_t order;
      Machine* machine;  // null once it has left
    };

    /// While one exists every place stays where it is.
    class Walk {
     public:
      explicit Walk(Service& service) : service_(service) { ++service_.walks_; }
      ~Walk() {
        --service_.walks_;
        service_.tidy();
      }
      Walk(const Walk&) = delete;
      Walk& operator=(const Walk&) = delete;

     private:
      const Orm::ActivityScope scope_;
      Service& service_;
    };

    void sort() {
      if (sorted_ || walks_ != 0) return;
      sweep();
      std::sort(places_.begin(), places_.end(),
                [](const Place& a, const Place& b) { return a.order < b.order; });
      sorted_ = true;
    }
    void tidy() {
      if (walks_ == 0 && dead_ * 2 > places_.size()) sweep();
    }
    void sweep() {
      std::erase_if(places_, [](const Place& place) { return !place.machine; });
      dead_ = 0;
    }

    std::vector<Place> places_;
    std::size_t dead_ = 0;
    std::uint32_t walks_ = 0;
    bool sorted_ = true;
  };

  Orm::ValueCollection<Orm::String, Orm::Ptr<Service>> services_;
};

}  // namespace Controller
