#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/accessibility.h"

namespace quil {

/// What reading one attribute or list of names gives: a result code and, when that is 0, the value.
struct AxResult {
    std::int32_t code = kAxSuccess;
    std::optional<Value> value = {};
};

/// The reads of a platform that can ask an element for several attributes at once.
class AxReads {
  public:
    virtual ~AxReads() = default;

    virtual AxResult copyAttributeValue(const ElementRef& element, std::string_view attribute) = 0;
    virtual AxResult copyActionNames(const ElementRef& element) = 0;
    /// Reads all of the attributes in one round trip and sets `results` to what single reads would
    /// give, in their order. Returns 0, or an error code: then the call gave nothing.
    virtual std::int32_t copyMultipleAttributeValues(const ElementRef& element,
                                                     const std::vector<std::string>& attributes,
                                                     std::vector<AxResult>& results) = 0;
    /// The process that answers for the element, which need not be that of its parent; 0 when
    /// unknown. No round trip.
    virtual std::int32_t processOf(const ElementRef& element) = 0;
    /// Seconds since the system started.
    virtual double uptime() = 0;
};

/// An observation whose walk looks at one element after the other: the first of the plan's
/// attributes that it asks of an element brings all of them. An element that refuses the combined
/// read is read attribute by attribute. A process hangs when a read of its elements has ended with
/// "cannot complete" and has taken long, as when the system's time for a reply has passed; a
/// quick "cannot complete" is about one element. The rest of a process that hangs is answered with
/// "cannot complete" at once: it costs one wait.
class AxObservation : public Observation {
  public:
    /// `*slot` points to this observation for as long as it lives. Both references outlive it.
    AxObservation(AxReads& reads, const ObservationPlan& plan, AxObservation*& slot);
    ~AxObservation() override { slot_ = nullptr; }
    AxObservation(const AxObservation&) = delete;
    AxObservation& operator=(const AxObservation&) = delete;

    AxResult copyAttributeValue(const ElementRef& element, std::string_view attribute);
    AxResult copyActionNames(const ElementRef& element);

  private:
    void readAhead(const ElementRef& element);
    bool hangs(const ElementRef& element);
    /// Makes a read of that element, and notes when its process hangs. `read` returns the code.
    template <typename Read>
    void watched(const ElementRef& element, const Read& read);

    AxReads& reads_;
    AxObservation*& slot_;
    std::vector<std::string> attributes_;
    ElementRef element_;              // whose results these are
    std::vector<AxResult> results_;   // one for each attribute, or none: it is read singly
    std::set<std::int32_t> hanging_;  // processes
};

}  // namespace quil
