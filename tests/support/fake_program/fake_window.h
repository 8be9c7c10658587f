#pragma once

#include <xcb/xcb.h>

#include <string>

namespace fake_program {

/// A window of this process on the X server.
class FakeWindow {
  public:
    FakeWindow(const std::string& title, int width, int height);
    ~FakeWindow() { xcb_disconnect(connection_); }
    FakeWindow(const FakeWindow&) = delete;
    FakeWindow& operator=(const FakeWindow&) = delete;

    xcb_window_t id() const { return window_; }
    int descriptor() const { return xcb_get_file_descriptor(connection_); }
    /// Processes what has arrived, and finds out where the window is.
    void update();
    int x() const { return x_; }
    int y() const { return y_; }

  private:
    void set(const char* property, const char* type, std::uint8_t format, std::uint32_t length,
             const void* data);

    xcb_connection_t* connection_;
    xcb_window_t root_ = 0;
    xcb_window_t window_ = 0;
    int x_ = 0, y_ = 0;
};

}  // namespace fake_program
