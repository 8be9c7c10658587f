#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// Memory that the X server writes into, so that images need not go through a socket.
class SharedSegment {
  public:
    /// Null when the server cannot share memory with us: it runs on another machine, or lacks the
    /// extension (MIT-SHM 1.2).
    static std::unique_ptr<SharedSegment> create(std::shared_ptr<X11Connection> connection,
                                                 std::size_t size);
    ~SharedSegment();
    SharedSegment(const SharedSegment&) = delete;
    SharedSegment& operator=(const SharedSegment&) = delete;

    std::uint32_t id() const { return id_; }
    const std::uint8_t* bytes() const { return static_cast<const std::uint8_t*>(memory_); }
    std::size_t size() const { return size_; }

  private:
    SharedSegment(std::shared_ptr<X11Connection> connection, std::size_t size)
        : connection_(std::move(connection)), size_(size) {}
    bool attach();

    std::shared_ptr<X11Connection> connection_;
    std::uint32_t id_ = 0;
    void* memory_ = nullptr;
    std::size_t size_;
};

/// Fetches the pixels of pixmaps and windows, the fastest way that the server offers.
class ImageTransfer {
  public:
    explicit ImageTransfer(std::shared_ptr<X11Connection> connection)
        : connection_(std::move(connection)) {}

    /// The pixels of a rectangle of the pixmap or window, which covers it, `size` bytes in all.
    /// Null when it has gone or the server sends something else. Valid until the next call.
    const std::uint8_t* fetch(xcb_drawable_t drawable, int x, int y, int width, int height,
                              std::size_t size);
    /// Gives back what the last pixels took, but for as much as the next picture of a window or
    /// screen of usual size will want again.
    void release();

  private:
    std::shared_ptr<X11Connection> connection_;
    bool cannotShare_ = false;
    std::unique_ptr<SharedSegment> segment_;
    XcbPointer<xcb_get_image_reply_t> reply_;
};

}  // namespace quil::linux_platform
