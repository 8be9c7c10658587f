#include "platform/linux/x11/capture/image_transfer.h"

#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>
#include <xcb/shm.h>

namespace quil::linux_platform {
namespace {

constexpr std::uint32_t kAllPlanes = 0xffffffff;
/// A 4K screen.
constexpr std::size_t kKeptBytes = std::size_t{3840} * 2160 * 4;

/// Whether descriptors can be handed to the server. To try it on another kind of socket would cost
/// the connection.
bool isLocal(X11Connection& connection) {
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    return getsockname(xcb_get_file_descriptor(connection.get()),
                       reinterpret_cast<sockaddr*>(&address), &length) == 0 &&
           address.ss_family == AF_UNIX;
}

/// Descriptors can be shared since version 1.2.
bool canShare(X11Connection& connection) {
    if (!isLocal(connection) || !connection.hasExtension(xcb_shm_id)) return false;
    const auto version =
        connection.reply(xcb_shm_query_version_reply, xcb_shm_query_version(connection.get()));
    return version && (version->major_version > 1 ||
                       (version->major_version == 1 && version->minor_version >= 2));
}

}  // namespace

std::unique_ptr<SharedSegment> SharedSegment::create(std::shared_ptr<X11Connection> connection,
                                                     std::size_t size) {
    if (!canShare(*connection)) return nullptr;
    std::unique_ptr<SharedSegment> segment(new SharedSegment(std::move(connection), size));
    return segment->attach() ? std::move(segment) : nullptr;
}

bool SharedSegment::attach() {
    const int file = memfd_create("quil-window-image", MFD_CLOEXEC);
    if (file < 0) return false;
    void* memory = MAP_FAILED;
    if (ftruncate(file, static_cast<off_t>(size_)) == 0) {
        memory = mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    }
    if (memory == MAP_FAILED) {
        close(file);
        return false;
    }
    memory_ = memory;
    const std::uint32_t id = xcb_generate_id(connection_->get());
    // The library closes the file.
    if (!connection_->succeeded(
            xcb_shm_attach_fd_checked(connection_->get(), id, file, /*read_only=*/0))) {
        return false;
    }
    id_ = id;
    return true;
}

SharedSegment::~SharedSegment() {
    if (id_ != 0) xcb_shm_detach(connection_->get(), id_);
    if (memory_) munmap(memory_, size_);
}

const std::uint8_t* ImageTransfer::fetch(xcb_drawable_t drawable, int x, int y, int width,
                                         int height, std::size_t size) {
    xcb_connection_t* const server = connection_->get();
    const auto left = static_cast<std::int16_t>(x);
    const auto top = static_cast<std::int16_t>(y);
    const auto columns = static_cast<std::uint16_t>(width);
    const auto rows = static_cast<std::uint16_t>(height);

    if (!cannotShare_ && (!segment_ || segment_->size() < size)) {
        segment_ = nullptr;  // before its successor takes up memory, too
        segment_ = SharedSegment::create(connection_, size);
        cannotShare_ = !segment_;
    }
    if (segment_) {
        const auto reply = connection_->reply(
            xcb_shm_get_image_reply,
            xcb_shm_get_image(server, drawable, left, top, columns, rows, kAllPlanes,
                              XCB_IMAGE_FORMAT_Z_PIXMAP, segment_->id(), 0));
        return reply && reply->size == size ? segment_->bytes() : nullptr;
    }
    reply_ = connection_->reply(
        xcb_get_image_reply, xcb_get_image(server, XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, left, top,
                                           columns, rows, kAllPlanes));
    if (!reply_ || static_cast<std::size_t>(xcb_get_image_data_length(reply_.get())) < size) {
        return nullptr;
    }
    return xcb_get_image_data(reply_.get());
}

void ImageTransfer::release() {
    reply_ = nullptr;
    if (!segment_ || segment_->size() <= kKeptBytes) return;
    segment_ = nullptr;
    xcb_flush(connection_->get());  // the server holds it, too
}

}  // namespace quil::linux_platform
