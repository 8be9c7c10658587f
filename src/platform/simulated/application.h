#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "platform/simulated/element.h"
#include "platform/workspace.h"

namespace quil::simulated {

/// A window: an element, an entry of the window list, and something that can be captured. Its
/// "AXTitle" is its title, its "AXPosition" and "AXSize" its bounds everywhere.
class Window : public Element {
  public:
    /// `owner` is null for a window that belongs to no application.
    Window(Application* owner, std::uint32_t number, std::string title, Rect frame);

    Window& layer(std::int64_t newLayer);
    /// Whether the window is on the screen; true at first.
    Window& onScreen(bool shown);
    /// Part of the desktop itself (wallpaper, icons), which window lists can leave out.
    Window& desktopElement(bool isDesktopElement = true);
    /// The background of the window's picture, 0xRRGGBB.
    Window& colour(std::uint32_t rgb);
    /// Replaces a member of the window's information dictionary, by a wrong type for instance.
    Window& info(std::string_view key, Value value);
    /// Leaves a member out of the window's information dictionary.
    Window& withoutInfo(std::string_view key);

    std::uint32_t number() const { return number_; }
    std::int64_t layer() const { return layer_; }
    bool onScreen() const { return onScreen_ && exists(); }
    bool isDesktopElement() const { return desktopElement_; }
    std::uint32_t colour() const { return colour_; }
    Rect frame() const { return rectangle().value_or(Rect{}); }
    Application* owner() const { return owner_; }
    /// The window's information dictionary, as `WindowList` hands it out.
    Value::Dictionary info() const;

  private:
    Application* owner_;
    std::uint32_t number_;
    std::int64_t layer_ = 0;
    bool onScreen_ = true;
    bool desktopElement_ = false;
    std::uint32_t colour_ = 0xECECEC;
    std::map<std::string, std::optional<Value>, std::less<>> infoOverrides_;
};

/// A running application: a process, and the root of its element tree.
class Application : public Element {
  public:
    Application(SimulatedDesktop& desktop, std::int32_t pid, std::string name);

    Application& bundleIdentifier(std::optional<std::string> identifier);
    Application& executablePath(std::optional<std::string> path);
    Application& localizedName(std::optional<std::string> name);
    Application& activationPolicy(int policy);
    /// The code signature's identifiers; without them the process has no signature.
    Application& signing(std::optional<std::string> team, std::optional<std::string> identifier);
    /// The whole signing information, of a wrong type for instance.
    Application& signingInformation(Value information);

    /// Opens a window, behind all others. The first one gets the application's focus.
    Window& window(std::string title, Rect frame);
    /// Gives the application's focus to a window or, with null, to none.
    Application& focusWindow(Element* window);
    /// Gives the keyboard focus to an element or, with null, to none.
    Application& focusElement(Element* element);
    /// Brings the application to the front.
    Application& activate();
    /// Ends the process; all its windows and elements are gone.
    void quit();

    std::int32_t pid() const { return facts_.processIdentifier; }
    const RunningApplication& facts() const { return facts_; }
    const std::optional<Value>& signingInformation() const { return signing_; }
    Element* focusedWindow() const { return focusedWindow_; }
    Element* focusedElement() const { return focusedElement_; }

    /// Knows "AXFocusedWindow", "AXFocusedUIElement" and "AXWindows" as well, unless an attribute
    /// of that name was given.
    std::int32_t read(std::string_view attribute, std::optional<Value>& value) const override;

  protected:
    void childRemoved(Element& child) override;

  private:
    SimulatedDesktop& desktop_;
    RunningApplication facts_;
    std::optional<Value> signing_;
    Element* focusedWindow_ = nullptr;
    Element* focusedElement_ = nullptr;
};

}  // namespace quil::simulated
