/** What to do where something does not work, on this platform. */

const isMac = process.platform === "darwin";

function settings(pane: string): string {
    return `allow it in System Settings → Privacy & Security → ${pane}, for the program that starts quil (your terminal), and start that again`;
}

const noDisplay = (): string | undefined => isMac || process.env["DISPLAY"] ? undefined
    : process.env["WAYLAND_DISPLAY"] ? "this is a Wayland session without Xwayland: log in to an X11 session" : "DISPLAY is not set: run it in a desktop session, or under scripts/with-desktop";

const wayland = (): string | undefined => !isMac && (process.env["XDG_SESSION_TYPE"] === "wayland" || process.env["WAYLAND_DISPLAY"])
    ? "this is a Wayland session, in which only the windows of Xwayland are seen: log in to an X11 session, or start programs with GDK_BACKEND=x11 or QT_QPA_PLATFORM=xcb" : undefined;

const noBus = (): string | undefined => isMac || process.env["DBUS_SESSION_BUS_ADDRESS"] ? undefined
    : "DBUS_SESSION_BUS_ADDRESS is not set: run it in the session itself, or start it by dbus-run-session";

export const ADVICE = {
    runtime: () => "build or install quil, and put it on PATH or name it by --runtime",
    accessibility: () => isMac ? settings("Accessibility")
        : noDisplay() ?? noBus() ?? "install at-spi2-core, and check that /usr/libexec/at-spi-bus-launcher runs in this session",
    screenRecording: () => isMac ? settings("Screen Recording") : noDisplay() ?? "the display lacks the Composite extension: use another X server, or switch it on",
    inputMonitoring: () => isMac ? settings("Input Monitoring") : noDisplay() ?? "the display lacks XInput 2.2 or RECORD: use another X server",
    displays: () => noDisplay() ?? (isMac ? "no display is switched on" : `no X server answers at ${process.env["DISPLAY"]}, or it lets nobody in: check DISPLAY and XAUTHORITY`),
    window: () => noDisplay() ?? wayland() ?? "something keeps it from the front: a menu that is open, a window manager that waits for a click to place it",
    tree: () => isMac ? settings("Accessibility") : noBus() ?? wayland()
        ?? "the application does not tell what is in its window: set GTK_MODULES and QT_ACCESSIBILITY=1 only if they were switched off, start Chromium with --force-renderer-accessibility, and Java programs with libatk-wrapper-java",
    picture: () => wayland() ?? "the window is hidden or its screen is locked",
    pointer: () => wayland() ?? "something holds the pointer (an open menu, a screen locker, another program that controls it), or the window does not fit on the screen",
    typing: () => wayland() ?? "something holds the keyboard (a menu, a screen locker), or an input method changes what is typed",
    recording: () => isMac ? settings("Input Monitoring") : wayland() ?? "the display does not tell of input: check XInput 2 and RECORD by xdpyinfo",
    clipboard: () => wayland() ?? "a clipboard manager takes texts away: try without it",
};
