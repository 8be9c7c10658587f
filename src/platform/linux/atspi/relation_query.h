#pragma once

#include "platform/linux/atspi/query_calls.h"

namespace quil::linux_platform {

/// The part of a query that is about other elements: children, parent, and what a combo box has
/// from its parts.
class RelationQuery : public QueryCalls {
  protected:
    using QueryCalls::QueryCalls;
    ~RelationQuery() = default;

    void askChildren();
    void askSelection();
    void askParent();
    void askParentRole();
    void askEditableChild();

  private:
    void askShowingChildren();
    void askFirstChildren();
    void askTextOf(const Reference& field);
    void askSelectedOf(const Reference& list);
    void askChoiceAsName(const Reference& list);
    void takeNameAsSelection(const Reference& element);
};

}  // namespace quil::linux_platform
