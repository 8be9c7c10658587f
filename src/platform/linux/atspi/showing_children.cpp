#include "platform/linux/atspi/showing_children.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <unordered_set>
#include <utility>

#include "platform/linux/atspi/messages.h"

namespace quil::linux_platform {
namespace {

/// Points in each direction at which is looked; the outer ones lie at the edges.
constexpr int kPoints = 5;

/// Rows, columns or indices of a list: those that were found, and how far from them others may be
/// showing.
class Span {
  public:
    /// `point` is the point's number in that direction.
    void add(std::int64_t index, int point) {
        first_ = isEmpty() ? index : std::min(first_, index);
        last_ = std::max(last_, index);
        meetsBegin_ = meetsBegin_ || point == 0;
        meetsEnd_ = meetsEnd_ || point == kPoints - 1;
    }
    bool isEmpty() const { return last_ < 0; }
    std::int64_t begin() const {
        return std::max<std::int64_t>(first_ - (meetsBegin_ ? 1 : margin()), 0);
    }
    std::int64_t end() const { return last_ + (meetsEnd_ ? 1 : margin()) + 1; }

  private:
    std::int64_t margin() const { return (last_ - first_) / 2 + 1; }

    std::int64_t first_ = 0;
    std::int64_t last_ = -1;
    bool meetsBegin_ = false;
    bool meetsEnd_ = false;
};

class ShowingSearch : public std::enable_shared_from_this<ShowingSearch> {
  public:
    ShowingSearch(AtspiProgram& program, const std::string& path, bool isTable,
                  std::int64_t maximumChildren, std::function<void(std::vector<Reference>)> found)
        : program_(program),
          path_(path),
          isTable_(isTable),
          maximumChildren_(maximumChildren),
          found_(std::move(found)) {}

    /// Where it is, and what it may be cut off by.
    void begin() {
        askExtents({program_.busName(), path_}, view_);
        get(atspi::kAccessible, "Parent", "(so)", readReference, parent_);
        then(&ShowingSearch::cutOff);
    }

  private:
    struct Hit {
        Reference child;
        int pointX;
        int pointY;
        std::optional<std::int32_t> index, row, column;
    };

    void cutOff() {
        if (parent_ && parent_->busName == program_.busName()) askExtents(*parent_, outer_);
        then(&ShowingSearch::probe);
    }

    void probe() {
        if (!view_) return finish();
        const Rect view = visible();
        for (int x = 0; x < kPoints; ++x) {
            for (int y = 0; y < kPoints; ++y) {
                const auto at = [](double begin, double length, int point) {
                    return static_cast<std::int32_t>(begin + 1 +
                                                     (length - 3) * point / (kPoints - 1));
                };
                callOwn(
                    atspi::kComponent, "GetAccessibleAtPoint",
                    [this, x, y](Reply reply) {
                        auto child = reply.message ? readReference(reply.message) : std::nullopt;
                        const bool isInside = child && !child->path.empty() &&
                                              child->busName == program_.busName() &&
                                              child->path != path_;
                        if (isInside) hits_.push_back({std::move(*child), x, y, {}, {}, {}});
                    },
                    "iiu", at(view.x, view.width, x), at(view.y, view.height, y),
                    program_.coordinateType());
            }
        }
        then(&ShowingSearch::findIndices);
    }

    void findIndices() {
        for (Hit& hit : hits_) {
            call(hit.child.path, atspi::kAccessible, "GetIndexInParent", [&hit](Reply reply) {
                if (reply.message) hit.index = readInt32(reply.message);
            });
        }
        if (isTable_) get(atspi::kTable, "NColumns", "i", readInt32, columns_);
        then(&ShowingSearch::findCells);
    }

    void findCells() {
        for (Hit& hit : hits_) {
            if (!isTable_ || !hit.index) continue;
            askCell("GetRowAtIndex", *hit.index, hit.row);
            askCell("GetColumnAtIndex", *hit.index, hit.column);
        }
        then(&ShowingSearch::list);
    }

    void list() {
        Span indices, rows, columns;
        for (const Hit& hit : hits_) {
            if (!hit.index) continue;
            const auto [row, column] = cellOf(hit);
            if (!isTable_) {
                indices.add(std::max(*hit.index, 0), hit.pointY);
            } else if (row >= 0 && column >= 0) {
                rows.add(row, hit.pointY);
                columns.add(column, hit.pointX);
            } else {
                children_.push_back(hit.child);  // a header, most likely
            }
        }
        if (!isTable_ && !indices.isEmpty()) listIndices(indices);
        if (isTable_ && !rows.isEmpty()) listCells(rows, columns);
        then(&ShowingSearch::filter);
    }

    /// A program with more cells than 31 bits can number has no rows for its own indices; they are
    /// what is left of the number.
    std::pair<std::int64_t, std::int64_t> cellOf(const Hit& hit) const {
        if (hit.row.value_or(-1) >= 0) return {*hit.row, hit.column.value_or(-1)};
        const bool isBeyond = hit.index && *hit.index < -1 && columns_.value_or(0) > 0;
        if (!isBeyond) return {-1, -1};
        const std::int64_t index = static_cast<std::uint32_t>(*hit.index);
        return {index / *columns_, index % *columns_};
    }

    void listIndices(const Span& indices) {
        const std::int64_t end = std::min(indices.end(), indices.begin() + maximumChildren_);
        for (auto i = indices.begin(); i < end; ++i)
            askChild(atspi::kAccessible, "GetChildAtIndex", i);
    }

    void listCells(const Span& rows, const Span& columns) {
        const auto limit = [](std::int64_t number) {
            return std::min<std::int64_t>(number, std::numeric_limits<std::int32_t>::max());
        };
        const std::int64_t width = columns.end() - columns.begin();
        const std::int64_t height = std::min(rows.end() - rows.begin(), maximumChildren_ / width);
        for (auto column = columns.begin(); column < columns.end(); ++column) {
            askChild(atspi::kTable, "GetColumnHeader", limit(column));
        }
        for (auto row = rows.begin(); row < rows.begin() + height; ++row) {
            askChild(atspi::kTable, "GetRowHeader", limit(row));
            for (auto column = columns.begin(); column < columns.end(); ++column) {
                children_.emplace_back();
                callOwn(atspi::kTable, "GetAccessibleAt", takeChild(children_.size() - 1), "ii",
                        static_cast<std::int32_t>(limit(row)),
                        static_cast<std::int32_t>(limit(column)));
            }
        }
    }

    /// Some programs make up headers that belong to nothing.
    void filter() {
        std::unordered_set<Reference, ReferenceHash> known;
        std::erase_if(children_, [&](const Reference& child) {
            return child.path.empty() || child.busName != program_.busName() ||
                   !known.insert(child).second;
        });
        isShowing_.assign(children_.size(), false);
        isOurs_.assign(children_.size(), false);
        for (std::size_t i = 0; i < children_.size(); ++i) {
            call(children_[i].path, atspi::kAccessible, "GetState", [this, i](Reply reply) {
                const auto states = reply.message ? readStates(reply.message) : std::nullopt;
                isShowing_[i] = states && states->has(AtspiState::showing);
            });
            call(
                children_[i].path, atspi::kProperties, "Get",
                [this, i](Reply reply) {
                    const auto parent =
                        reply.message ? readVariant<Reference>(reply.message, "(so)", readReference)
                                      : std::nullopt;
                    isOurs_[i] = parent && parent->path == path_;
                },
                "ss", atspi::kAccessible, "Parent");
        }
        then(&ShowingSearch::finish);
    }

    void finish() {
        std::vector<Reference> showing;
        for (std::size_t i = 0; i < isShowing_.size(); ++i) {
            if (isShowing_[i] && isOurs_[i]) showing.push_back(std::move(children_[i]));
        }
        found_(std::move(showing));
    }

    /// The part that what it lies in lets be seen.
    Rect visible() const {
        const Rect& view = *view_;
        if (!outer_ || !outer_->hasArea()) return view;
        const double left = std::max(view.x, outer_->x);
        const double top = std::max(view.y, outer_->y);
        const double right = std::min(view.x + view.width, outer_->x + outer_->width);
        const double bottom = std::min(view.y + view.height, outer_->y + outer_->height);
        return right > left && bottom > top ? Rect{left, top, right - left, bottom - top} : view;
    }

    /// What comes when everything that has been asked for has come.
    void then(void (ShowingSearch::*next)()) {
        if (left_ == 0) return (this->*next)();
        next_ = next;
    }

    template <typename... Values>
    void call(const std::string& path, const char* interface, const char* member,
              ReplyHandler handler, const char* signature = "", Values... values) {
        ++left_;
        program_.peer().call(
            path.c_str(), interface, member,
            [self = shared_from_this(), handler = std::move(handler)](Reply reply) {
                handler(reply);
                const bool isLast = --self->left_ == 0;
                // A call to a program that hangs fails before there is a next step.
                const auto next = isLast ? std::exchange(self->next_, nullptr) : nullptr;
                if (next) (self.get()->*next)();
            },
            signature, values...);
    }

    template <typename... Values>
    void callOwn(const char* interface, const char* member, ReplyHandler handler,
                 const char* signature = "", Values... values) {
        call(path_, interface, member, std::move(handler), signature, values...);
    }

    template <typename Result>
    void get(const char* interface, const char* name, const char* type,
             std::optional<Result> (*read)(sd_bus_message*), std::optional<Result>& field) {
        callOwn(
            atspi::kProperties, "Get",
            [type, read, &field](Reply reply) {
                if (reply.message) field = readVariant(reply.message, type, read);
            },
            "ss", interface, name);
    }

    void askExtents(const Reference& element, std::optional<Rect>& extents) {
        call(
            element.path, atspi::kComponent, "GetExtents",
            [&extents](Reply reply) {
                if (reply.message) extents = readRect(reply.message);
            },
            "u", program_.coordinateType());
    }

    void askCell(const char* member, std::int32_t index, std::optional<std::int32_t>& result) {
        callOwn(
            atspi::kTable, member,
            [&result](Reply reply) {
                if (reply.message) result = readInt32(reply.message);
            },
            "i", index);
    }

    ReplyHandler takeChild(std::size_t index) {
        return [this, index](Reply reply) {
            if (!reply.message) return;
            children_[index] = readReference(reply.message).value_or(Reference());
        };
    }

    void askChild(const char* interface, const char* member, std::int64_t number) {
        children_.emplace_back();
        callOwn(interface, member, takeChild(children_.size() - 1), "i",
                static_cast<std::int32_t>(number));
    }

    AtspiProgram& program_;
    const std::string path_;
    const bool isTable_;
    const std::int64_t maximumChildren_;
    const std::function<void(std::vector<Reference>)> found_;

    std::optional<Rect> view_, outer_;
    std::optional<Reference> parent_;
    std::vector<Hit> hits_;
    std::optional<std::int32_t> columns_;
    std::vector<Reference> children_;
    std::vector<bool> isShowing_, isOurs_;
    int left_ = 0;
    void (ShowingSearch::*next_)() = nullptr;
};

}  // namespace

void findShowingChildren(AtspiProgram& program, const std::string& path, bool isTable,
                         std::int64_t maximumChildren,
                         std::function<void(std::vector<Reference>)> found) {
    std::make_shared<ShowingSearch>(program, path, isTable, maximumChildren, std::move(found))
        ->begin();
}

}  // namespace quil::linux_platform
