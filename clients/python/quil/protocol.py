"""The shapes of the protocol's values, as protocol/quil.schema.json has them, for type checkers.

Rectangles are in global screen coordinates: points, the origin at the top left of the main display, y growing downward.
"""
from __future__ import annotations

from typing import Any, Dict, List, Optional, TypedDict


class Point(TypedDict):
    """A place as fractions, from 0 to 1, of the virtual screen."""

    x: float
    y: float


class Bounds(TypedDict):
    x: float
    y: float
    width: float
    height: float


class TargetMembers(TypedDict, total=False):
    bundleIdentifier: str
    name: str
    windowTitle: str
    pid: int
    executablePath: str
    signingIdentity: str


class _NodeAlways(TypedDict):
    token: str
    role: str


class Node(_NodeAlways, total=False):
    name: str
    description: str
    value: str
    automationId: str
    enabled: bool
    bounds: Bounds
    actions: List[str]


class _ElementAlways(TypedDict):
    token: str
    role: str


class ElementSummary(_ElementAlways, total=False):
    name: str


class WindowBounds(TypedDict):
    X: float
    Y: float
    Width: float
    Height: float


class _WindowAlways(TypedDict):
    id: int
    name: str
    owner: str
    pid: int


class WindowMembers(_WindowAlways, total=False):
    bounds: WindowBounds
    bundleIdentifier: str
    executablePath: str


class _ApplicationAlways(TypedDict):
    appId: str
    name: str
    running: bool


class ApplicationMembers(_ApplicationAlways, total=False):
    bundleIdentifier: str
    executablePath: str
    signingIdentity: str


class Display(TypedDict):
    id: int
    name: str
    bounds: Bounds


class _RecordedAlways(TypedDict):
    id: str
    at: int
    kind: str
    action: str
    params: Dict[str, Any]


class RecordedAction(_RecordedAlways, total=False):
    target: Dict[str, Any]


class Permissions(TypedDict):
    accessibility: bool
    screenRecording: bool
    inputMonitoring: bool
    permissionsGranted: bool
    semantic: bool


class TargetResult(TypedDict):
    target: TargetMembers


class ScreenshotResult(TypedDict):
    screenshotDataURL: str
    target: TargetMembers


class WindowsResult(TypedDict):
    windows: List[WindowMembers]


class _StateAlways(TypedDict):
    revision: str
    nodes: List[Node]
    axText: str
    truncated: bool


class State(_StateAlways, total=False):
    target: TargetMembers


class ValueResult(TypedDict):
    value: Optional[str]
    target: TargetMembers
    element: ElementSummary


class ActionResult(TypedDict):
    ok: bool
    target: TargetMembers
    element: ElementSummary


class Done(TypedDict):
    ok: bool


class DoneWithTarget(TypedDict):
    ok: bool
    target: TargetMembers


class AppsResult(TypedDict):
    apps: List[ApplicationMembers]


class _UpdateAlways(TypedDict):
    type: str


class GlimpseUpdate(_UpdateAlways, total=False):
    text: str
    screenshotDataURL: str
    target: TargetMembers
    error: str


class UpdateResult(TypedDict):
    update: GlimpseUpdate


class EventResult(TypedDict):
    event: Optional[RecordedAction]


class EventsResult(TypedDict):
    events: List[RecordedAction]


class DisplaysResult(TypedDict):
    displays: List[Display]
    virtualScreen: Bounds


class CaptureResult(TypedDict):
    screenshotDataURL: str
    bounds: Bounds


class ClipboardResult(TypedDict):
    text: Optional[str]


class WaitResult(TypedDict):
    changed: bool
    revision: str
