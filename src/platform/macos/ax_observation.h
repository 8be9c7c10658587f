#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/accessibility.h"

namespace quil {

/// What reading one attribute or list of names gives: a result code and, when that is 0, the value.
struct AxAnswer {
    std::int32_t code = kAxSuccess;
    std::optional<Value> value = {};
};

/// The reads of a platform that can ask an element for several attributes at once.
class AxReads {
  public:
    virtual ~AxReads() = default;

    virtual AxAnswer copyAttributeValue(const ElementRef& element, std::string_view attribute) = 0;
    virtual AxAnswer copyActionNames(const ElementRef& element) = 0;
    /// Reads all of the attributes in one round trip and sets `answers` to what single reads would
    /// give, in their order. Returns 0, or an error code: then the call gave nothing.
    virtual std::int32_t copyMultipleAttributeValues(const ElementRef& element,
                                                     const std::vector<std::string>& attributes,
                                                     std::vector<AxAnswer>& answers) = 0;
};

/// An observation whose walk looks at one element after the other: the first of the plan's
/// attributes that it asks of an element brings all of them. An element that refuses the combined
/// read is read attribute by attribute. Once a read has ended with "cannot complete" (the
/// application has not answered within the system's time) the rest are answered so at once: a hung
/// application costs one such wait.
class AxObservation : public Observation {
  public:
    /// `*slot` points to this observation for as long as it lives. Both references outlive it.
    AxObservation(AxReads& reads, const ObservationPlan& plan, AxObservation*& slot);
    ~AxObservation() override { slot_ = nullptr; }
    AxObservation(const AxObservation&) = delete;
    AxObservation& operator=(const AxObservation&) = delete;

    AxAnswer copyAttributeValue(const ElementRef& element, std::string_view attribute);
    AxAnswer copyActionNames(const ElementRef& element);

  private:
    void readAhead(const ElementRef& element);
    AxAnswer noted(AxAnswer answer);

    AxReads& reads_;
    AxObservation*& slot_;
    std::vector<std::string> attributes_;
    ElementRef element_;             // whose answers these are
    std::vector<AxAnswer> answers_;  // one for each attribute, or none: it is read singly
    bool unreachable_ = false;
};

}  // namespace quil
