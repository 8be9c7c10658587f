#!/usr/bin/env python3
"""Plants one fault after the other in the Mac backend and tells which conversation catches it.

    QUIL_BUILD_DIR=build/mac tests/macos/planted_faults.py [--sample | WORD...]

Without arguments all of them, which takes some minutes; with words those whose description holds one
of them; --sample takes every twelfth. A fault is a line of a source file in another form: the file
alone is compiled anew, beside the tree, and linked to what has been built. Fails when a fault is not
caught, or its line is no longer there.
"""
import json
import os
import pathlib
import shlex
import subprocess
import sys
import tempfile

TESTS = pathlib.Path(__file__).resolve().parent
ROOT = TESTS.parent.parent
BACKEND = ROOT / "src/platform/macos"
BUILD = pathlib.Path(os.environ["QUIL_BUILD_DIR"]).resolve()
# From the quickest to the slowest; the first that fails ends the search.
CONVERSATIONS = [["test_mac.py", "-k", "all_methods"], ["test_mac.py", "-k", "OtherProcesses"],
                 ["test_mac.py", "-k", "recordings"], ["test_protocol.py"],
                 *(["test_mac.py", "-k", name] for name in ("any_call", "SilentProcesses", "grows"))]

FAULTS = [  # what is wrong, file, the right text, the wrong text
    ("an event is never released", "event_posting.mm",
     "CfRef<CGEventRef>::adopt(event)", "CfRef<CGEventRef>::share(event)"),
    ("an event source is never released", "event_posting.mm",
     "CfRef<CGEventSourceRef>::adopt(", "CfRef<CGEventSourceRef>::share("),
    ("events are posted to the session", "event_posting.mm",
     "static_cast<CGEventTapLocation>(tapLocation)", "kCGSessionEventTap"),
    ("wheels swapped", "event_posting.mm", "wheel1, wheel2, wheel3));", "wheel2, wheel1, wheel3));"),
    ("an element of a list is released once too often", "values.mm",
     "CfRef<AXUIElementRef>::share(element)", "CfRef<AXUIElementRef>::adopt(element)"),
    ("a point is read as a size", "values.mm",
     "kAXValueTypeCGPoint, &point", "kAXValueTypeCGSize, &point"),
    ("large unsigned numbers lose digits", "values.mm",
     "    if (!CFNumberIsFloatType(number)) return utf8(object.stringValue);\n", ""),
    ("a new value is never released", "values.mm",
     "adopt((__bridge_retained CFTypeRef)nsString(*string))",
     "share((__bridge_retained CFTypeRef)nsString(*string))"),
    ("an attribute's value is never released", "ax_calls.mm",
     "CfRef<CFTypeRef>::adopt(copied)", "CfRef<CFTypeRef>::share(copied)"),
    ("action names are never released", "ax_calls.mm",
     "const auto names = CfRef<CFArrayRef>::adopt(copied)",
     "const auto names = CfRef<CFArrayRef>::share(copied)"),
    ("a combined read is never released", "ax_calls.mm",
     "const auto values = CfRef<CFArrayRef>::adopt(copied)",
     "const auto values = CfRef<CFArrayRef>::share(copied)"),
    ("an error in a combined read is taken for a value", "ax_calls.mm",
     "kAXValueTypeAXError, &error", "kAXValueTypeCGSize, &error"),
    ("the combined read stops at the first error", "ax_calls.mm", "names, {}, &copied",
     "names, 1, &copied"),
    ("an application's element is never released", "accessibility.mm",
     "CfRef<AXUIElementRef>::adopt(", "CfRef<AXUIElementRef>::share("),
    ("one element that cannot complete silences its process", "ax_observation.cpp",
     "kLong = 1;", "kLong = 0;"),
    ("a hung process is waited for again and again", "ax_observation.cpp",
     "kLong = 1;", "kLong = 100;"),
    ("a hung process silences all others", "ax_observation.cpp",
     "hanging_.contains(reads_.processOf(element))", "!hanging_.contains(-1)"),
    ("a tap is never invalidated", "event_taps.mm",
     "    CFMachPortInvalidate(own(tap).port.get());\n", ""),
    ("a tap is never released", "event_taps.mm",
     "CfRef<CFMachPortRef>::adopt(", "CfRef<CFMachPortRef>::share("),
    ("a run loop is released once too often", "event_taps.mm",
     "CfRef<CFRunLoopRef>::share(", "CfRef<CFRunLoopRef>::adopt("),
    ("a tap's source is never released", "event_taps.mm",
     "CfRef<CFRunLoopSourceRef>::adopt(", "CfRef<CFRunLoopSourceRef>::share("),
    ("a source in no mode", "event_taps.mm",
     "handleOf(source), kCFRunLoopCommonModes);\n}\n\nvoid MacEventTaps::removeSource",
     "handleOf(source), nullptr);\n}\n\nvoid MacEventTaps::removeSource"),
    ("a wrong field of events", "tapped_event.mm",
     "static_cast<CGEventField>(field)", "static_cast<CGEventField>(field + 1)"),
    ("characters are read off the main thread", "tapped_event.mm",
     "return askOnMainThread<std::optional<std::string>>(\n        [event] { return "
     "charactersOf(event.get()); });", "return charactersOf(event.get());"),
    ("the main thread is not woken", "main_thread.mm",
     "    CFRunLoopWakeUp(CFRunLoopGetMain());\n", ""),
    ("the end does not wake the main thread", "threads.mm",
     "    CFRunLoopWakeUp(CFRunLoopGetMain());\n", ""),
    ("requests leave their objects in no pool of their own", "threads.mm",
     "    @autoreleasepool {\n        body();\n    }", "    body();"),
    ("the main run loop's source is never invalidated", "threads.mm",
     "    CFRunLoopSourceInvalidate(stopSource_.get());\n", ""),
    ("screens are asked off the main thread", "displays.mm",
     "askOnMainThread<std::vector<Screen>>(screensNow)", "screensNow()"),
    ("no application object", "platform.mm",
     "[[NSApplication sharedApplication]\n            "
     "setActivationPolicy:NSApplicationActivationPolicyProhibited];", ";"),
    ("an icon in the Dock", "platform.mm",
     "setActivationPolicy:NSApplicationActivationPolicyProhibited",
     "setActivationPolicy:NSApplicationActivationPolicyRegular"),
    ("the pasteboard is cleared on another thread", "pasteboard.mm",
     "    thread_.call<bool>(kOwnerTimeout, [] {\n        [[NSPasteboard generalPasteboard] "
     "clearContents];\n        return true;\n    });",
     "    [[NSPasteboard generalPasteboard] clearContents];"),
    ("a silent owner of the pasteboard holds up the host", "pasteboard.mm",
     "kOwnerTimeout{5}", "kOwnerTimeout{60}"),
    ("opening an application has no bound", "workspace.mm", "kOpenTimeout{20}", "kOpenTimeout{600}"),
    ("the list of windows is waited for too long", "screen_capture.mm",
     "kCaptureTimeout{10}", "kCaptureTimeout{60}"),
    ("an image is released once too often", "screen_capture.mm",
     "CfRef<CGImageRef>::share(", "CfRef<CGImageRef>::adopt("),
    ("the pointer in the picture", "screen_capture.mm",
     "        settings.showsCursor = configuration.showsCursor;\n", ""),
    ("width and height swapped", "screen_capture.mm",
     "settings.width = static_cast<std::size_t>(configuration.width)",
     "settings.width = static_cast<std::size_t>(configuration.height)"),
    ("a class that the system does not have yet", "screen_capture.mm",
     "if (@available(macOS 14.0, *))", "if (true)"),
    ("windows that are not on the screen", "window_list.mm",
     "CGWindowListCopyWindowInfo(options, relativeToWindow)",
     "CGWindowListCopyWindowInfo(0, relativeToWindow)"),
    ("the window list is never released", "window_list.mm", "::adopt(", "::share("),
    ("team and identifier swapped", "code_signing.mm",
     "add(kCodeInfoTeamIdentifier, kSecCodeInfoTeamIdentifier)",
     "add(kCodeInfoTeamIdentifier, kSecCodeInfoIdentifier)"),
    ("a process id of another width", "code_signing.mm",
     "@(static_cast<pid_t>(*pid))", "@(static_cast<long>(*pid))"),
    ("a change watch has another clock", "ax_change_watch.mm",
     "Seconds([NSProcessInfo processInfo].systemUptime)",
     "std::chrono::steady_clock::now().time_since_epoch()"),
    ("changes are never noticed", "ax_change_watch.mm", "->noticed_ = true", "->noticed_ = false"),
    ("an observer outlives its watch", "ax_change_watch.mm",
     "    CFRunLoopRemoveSource(CFRunLoopGetCurrent(), AXObserverGetRunLoopSource(observer_.get()),\n"
     "                          kCFRunLoopDefaultMode);\n", ""),
    ("no signing information is asked for", "code_signing.mm",
     "codeOf<SecStaticCodeRef>(staticCode), flags", "codeOf<SecStaticCodeRef>(staticCode), 0"),
    ("signing information is never released", "code_signing.mm",
     "CfRef<CFDictionaryRef>::adopt(", "CfRef<CFDictionaryRef>::share("),
    ("code objects are never released", "code_signing.mm",
     "CfRef<T>::adopt(code)", "CfRef<T>::share(code)"),
    ("a wrong key of bundles", "bundles.mm", '@"CFBundleDisplayName"', '@"CFBundleDisplayname"'),
    ("names in the wrong order", "collation.mm",
     "[nsString(a) localizedCaseInsensitiveCompare:nsString(b)]",
     "[nsString(b) localizedCaseInsensitiveCompare:nsString(a)]"),
]


def build_with(source, folder):
    """An executable with that file in place of the backend's file of the same name."""
    entry = next(entry for entry in json.loads((BUILD / "compile_commands.json").read_text())
                 if pathlib.Path(entry["file"]) == BACKEND / source.name
                 and "quil_mac_backend" in entry["command"])
    command = shlex.split(entry["command"])
    right_object = command[command.index("-o") + 1]
    wrong_object = str(folder / "fault.o")
    command = [wrong_object if word == right_object else str(source) if word == entry["file"] else word
               for word in command]
    # What a fault leaves unused is no reason to refuse it.
    subprocess.run([*command, "-w"], cwd=BUILD, check=True, capture_output=True)
    link = subprocess.run(["ninja", "-t", "commands", "-s", "quil-mac-fake"], cwd=BUILD, check=True,
                          capture_output=True, text=True).stdout.strip()
    fake = folder / "quil-mac-fake"
    link = link.replace(right_object, wrong_object).replace("-o quil-mac-fake", f"-o {fake}")
    subprocess.run(link, cwd=BUILD, shell=True, check=True, capture_output=True)
    return fake


def caught_by(fake):
    environment = {**os.environ, "QUIL_BUILD_DIR": str(BUILD), "QUIL_MAC_FAKE": str(fake),
                   "PYTHONPATH": f"{TESTS.parent / 'support'}:{ROOT / 'clients/python'}"}
    for conversation in CONVERSATIONS:
        done = subprocess.run([sys.executable, "-B", *conversation, "-f"], cwd=TESTS,
                              env=environment, capture_output=True, text=True)
        if "_FailedTest" in done.stderr:
            raise SystemExit(done.stderr)
        if done.returncode != 0:
            lines = done.stdout.splitlines() + done.stderr.splitlines()
            return next((line for line in lines if line.startswith(("FAIL:", "ERROR:"))), "?")
    return None


def main():
    words = sys.argv[1:]
    faults = FAULTS[::12] if words == ["--sample"] else [
        fault for fault in FAULTS if not words or any(word in fault[0] for word in words)]
    missed = 0
    for what, name, right, wrong in faults:
        text = (BACKEND / name).read_text()
        if right not in text:
            print(f"{what}: the line is no longer in {name}", flush=True)
            missed += 1
            continue
        with tempfile.TemporaryDirectory() as folder:
            source = pathlib.Path(folder) / name
            source.write_text(text.replace(right, wrong, 1))
            catcher = caught_by(build_with(source, pathlib.Path(folder)))
        print(f"{what}: {catcher or 'NOT CAUGHT'}", flush=True)
        missed += catcher is None
    print(f"{len(faults)} faults, {missed} not caught")
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
