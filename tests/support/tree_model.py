"""Random descriptions of programs for tests/support/fake_program, and a plain model of what a host is
to see of them."""
import random

MAXIMUM_NODES, MAXIMUM_CHARACTERS, MAXIMUM_DEPTH, FIELD_BUDGET, FIELD_LIMIT = 4000, 100000, 40, 200000, 500

# AT-SPI role number: the role that hosts see.
ROLES = {39: "AXGroup", 43: "AXButton", 29: "AXStaticText", 7: "AXCheckBox", 31: "AXList", 61: "AXTextField",
         79: "AXTextField", 51: "AXSlider", 23: "AXWindow", 33: "AXMenu", 34: "AXMenuBar"}
LEAVES, CONTAINERS = (43, 29, 7, 61, 79, 51), (39, 39, 39, 31, 33, 34)
CHECKED, EDITABLE, ENABLED, SENSITIVE, SHOWING, VERTICAL, VISIBLE, MANAGES_DESCENDANTS = 4, 7, 8, 24, 25, 29, 30, 31
FAILED = "org.freedesktop.DBus.Error.Failed"
NOT_SUPPORTED = "org.freedesktop.DBus.Error.NotSupported"
FARTHEST = -2 ** 31  # where GTK places what is not on the screen


class Generator:
    """Makes one description. The same seed makes the same one."""

    def __init__(self, seed, largest):
        self.random = random.Random(seed)
        self.largest = largest
        self.elements = [{"role": 75, "name": "fake", "children": [1], "interfaces": ["Application"]},
                         {"role": 23, "name": f"Fake {seed}", "extents": [0, 0, 500, 400], "children": []}]
        self.fails = self.chance(0.3)
        self.words = self.chance(0.1) * 450  # so long are the names

    def chance(self, probability):
        return self.random.random() < probability

    def description(self):
        toolkit, own = self.random.choice((
            ({"name": "gtk", "version": "3.24"}, {"cache": True, "getAll": True}),
            ({"name": "gtk", "version": "3.24"}, {"cache": True, "getAll": True, "socket": True}),
            ({"name": "Gecko", "version": "128"}, {"cache": True, "getAll": True, "socket": True}),
            ({"name": "gtk", "version": "2.24"}, {"getAll": True}),
            ({"name": "GTK", "version": "4.8"}, {"getAll": False}),
            ({"name": "Qt", "version": "5.15"}, {"getAll": False}),
            ({"name": "odd", "version": ""}, {"getAll": False, "getChildren": False})))
        self.caches = bool(own.get("cache"))
        shape = self.random.choice((self.bush, self.bush, self.bush, self.flat, self.chain, self.rows))
        size = self.random.choice((5, 30, 30, 200, 200, self.largest))
        shape(size if shape != self.chain else min(size, 60))
        self.spoil()
        title = self.elements[1]["name"] + " — Program" * self.chance(0.3)  # the window's, as the user sees it
        description = {"title": title, "toolkit": toolkit, "elements": self.elements, **own}
        if self.chance(0.4):
            description["shuffle"] = self.random.randrange(1000)
        if self.chance(0.3):
            description["signals"] = True
        if self.chance(0.1) and size <= 200:
            description["busy"] = 200
        return description

    def add(self, parent, role):
        number = len(self.elements)
        word = self.random.choice("abcdefg") * self.random.choice((0, 1, 7, 30, self.words))
        states = [VISIBLE] + [ENABLED, SENSITIVE] * self.chance(0.8) + [SHOWING] * self.chance(0.8)
        element = {"role": role, "name": word, "description": word[:3] * self.chance(0.2), "states": states,
                   "id": f"id-{number}" * self.chance(0.2), "interfaces": ["Component"] * self.chance(0.9),
                   "extents": [self.random.randrange(480), self.random.randrange(380), self.random.randrange(20), 9],
                   "children": []}
        if self.chance(0.02):
            element["extents"][0] = FARTHEST + 12
        if role in (43, 7) or self.chance(0.1):
            element["interfaces"] = element["interfaces"] + ["Action"]
            element["actions"] = self.random.choice((["click"], ["click", "show menu"], [], ["frob", "press"]))
        if role == 7:
            states += [CHECKED] * self.chance(0.5)
        if role in (61, 79):
            states += [EDITABLE]
            element["interfaces"] = element["interfaces"] + ["Text", "EditableText"]
            element["text"] = self.random.choice(("", "text", "x" * 700))
        if role == 51:
            element["interfaces"] = element["interfaces"] + ["Value"]
            element["number"] = self.random.choice((0, 1, 42))
        self.elements.append(element)
        self.elements[parent]["children"].append(number)
        if self.fails and self.chance(0.1):
            # What the cache tells without being asked does not fail.
            members = ["GetExtents", "AccessibleId", "NActions", "GetText", "CurrentValue"]
            members += [] if self.caches else ["GetRole", "GetState", "GetInterfaces", "Name", "ChildCount"]
            element["errors"] = {self.random.choice(members): FAILED}
        if self.chance(0.002):
            element["late"] = 120
        return number

    def bush(self, size):
        containers = [1]
        while len(self.elements) < size + 2:
            parent = self.random.choice(containers[-8:])
            if self.chance(0.3):
                containers.append(self.add(parent, self.random.choice(CONTAINERS)))
            else:
                self.add(parent, self.random.choice(LEAVES))

    def flat(self, size):
        inner = self.add(1, 39)
        for _ in range(size):
            self.add(inner, self.random.choice(LEAVES))

    def chain(self, size):
        last = 1
        for _ in range(size):
            last = self.add(last, 39)
            self.add(last, 29)

    def rows(self, size):
        table = self.add(1, 31)
        for _ in range(max(1, size // 4)):
            row = self.add(table, 39)
            for _ in range(3):
                self.add(row, self.random.choice(LEAVES))

    def spoil(self):
        """What programs should not do, but do."""
        numbers = range(2, len(self.elements))
        parents = [number for number in numbers if self.elements[number]["children"]]
        if not parents:
            return

        def some(probability):
            return [self.elements[self.random.choice(parents)] for _ in range(3) if self.chance(probability)]

        for element in some(0.1):
            element["count"] = self.random.choice((-1, 1, len(element["children"]) + 3, 2000))
        for element in some(0.05):
            element["children"].insert(0, -1)
        for element in some(0.05):
            element["children"].append(self.random.choice(element["children"]))  # twice in one list
        for element in some(0.03):
            element["children"].append(self.random.choice(numbers))  # twice in the tree, or its own ancestor
        for element in some(0.03):
            element["states"] = element["states"] + [MANAGES_DESCENDANTS]
            element["count"] = 2 ** 31 - 1
        for element in some(0.05):
            element["uncached"] = True
        for element in some(0.05):
            element["unlisted"] = True
        for element in some(0.05):
            element.setdefault("errors", {})["GetChildren"] = self.random.choice((FAILED, NOT_SUPPORTED))
        for number in numbers:
            if self.chance(0.004):
                self.elements[number] = None  # has gone, but its parent still lists it

    def changes(self):
        """Some elements, differently: {number: what is different}."""
        changes = {}
        for _ in range(self.random.choice((1, 3))):
            number = self.random.randrange(1, len(self.elements))
            element = self.elements[number]
            if not element:
                continue
            kind = self.random.choice(("name", "children", "states", "extents")) if number > 1 else "children"
            change = {"name": "changed", "children": element["children"][:-1], "states": [VISIBLE, SHOWING],
                      "extents": [1, 2, 3, 4]}[kind]
            changes.setdefault(number, {})[kind] = element[kind] = change
        return changes


class Model:
    """The walk over a description: `nodes` without bounds' origin, and `truncated`."""

    def __init__(self, description):
        self.elements, self.title = description["elements"], description["title"]
        self.has_lists = description.get("getChildren", True)
        self.shows_all = description["toolkit"]["name"] == "GTK"  # which says only of windows that they show
        self.nodes, self.truncated = [], False
        self.areas = {1: None}  # of each element, the area in which it can be seen; None for anywhere
        self.characters, self.fields = MAXIMUM_CHARACTERS, FIELD_BUDGET
        self.walk(1, "e0", 0, parent=0)

    def walk(self, number, token, depth, parent):
        if (len(self.nodes) >= MAXIMUM_NODES or self.characters < 1 or self.fields < 1
                or depth >= MAXIMUM_DEPTH):
            self.truncated = True
            return
        node = {"token": token, **self.record(number, parent)}
        self.nodes.append(node)
        self.fields -= sum(len(node.get(key, "")) for key in ("role", "name", "description", "value", "automationId"))
        self.characters -= min(len(line(node)), self.characters) + 1
        inside = self.area_inside(number)
        for child in self.children(number):
            self.areas.setdefault(child, inside)
        for position, child in enumerate(self.children(number)):
            self.walk(child, f"{token}.{position}", depth + 1, number)

    def children(self, number):
        element = self.elements[number]
        if not element or element.get("count") == 0:
            return []
        errors = element.get("errors", {})
        children = [child for child in element["children"] if child >= 0]
        count = element.get("count", len(element["children"]))
        by_index = not self.has_lists or errors.get("GetChildren") or "unlisted" in element or count > 10 ** 6
        if not by_index:
            return children
        if count < 0 or "ChildCount" in errors:
            return []
        return [child for child in element["children"][:count] if child >= 0]

    def area(self, number):
        """Where the element can be seen: (x, y, width, height); None when it is nowhere."""
        element = self.elements[number] or {"errors": {"GetState": FAILED}}
        errors = element.get("errors", {})
        states = element.get("states", [SHOWING]) if "GetState" not in errors else []
        interfaces = element.get("interfaces", ["Component"]) if "GetInterfaces" not in errors else []
        is_showing = SHOWING in states or self.shows_all and VISIBLE in states
        if not is_showing or "Component" not in interfaces or "GetExtents" in errors:
            return None
        if element["extents"][0] < FARTHEST / 2:
            return 0, 0, 0, 0
        return clipped(element["extents"], self.areas[number])

    def area_inside(self, number):
        """The area in which what is in the element can be seen."""
        element = self.elements[number] or {}
        errors, states = element.get("errors", {}), element.get("states", ())
        is_list = MANAGES_DESCENDANTS in states and "GetState" not in errors
        if is_list and SHOWING not in states and not (self.shows_all and VISIBLE in states):
            return 0, 0, 0, 0
        area = self.area(number) if is_list or element.get("role") == 49 and "GetRole" not in errors else None
        return area if area else self.areas[number]

    def record(self, number, parent):
        element = self.elements[number]
        if not element:
            return {"role": "AXUnknown"}
        errors = element.get("errors", {})
        role = element["role"] if "GetRole" not in errors else None
        states = element.get("states", [ENABLED, SENSITIVE, SHOWING, VISIBLE]) if "GetState" not in errors else None
        interfaces = element.get("interfaces", ["Component"]) if "GetInterfaces" not in errors else []
        node = {"role": ROLES.get(role, "AXUnknown")}
        above = self.elements[parent] or {}
        if role == 33 and above.get("role") == 34 and "GetRole" not in above.get("errors", {}):
            node["role"] = "AXMenuBarItem"
        name = self.title if number == 1 else element["name"]
        texts = {"name": "" if "Name" in errors else name, "description": element.get("description"),
                 "automationId": "" if "AccessibleId" in errors else element.get("id")}
        is_text = role in (61, 79) or EDITABLE in (states or ())
        if is_text and "Text" in interfaces:
            texts["value"] = "" if "GetText" in errors else element["text"]
        elif "Value" in interfaces and "CurrentValue" not in errors:
            texts["value"] = str(element["number"])
        elif role == 7:
            texts["value"] = str(int(CHECKED in (states or ())))
        node.update((key, text[:FIELD_LIMIT]) for key, text in texts.items() if text)
        if states is not None:
            node["enabled"] = SENSITIVE in states
        area = self.area(number)
        if area and area[2] > 0 and area[3] > 0:
            node["bounds"] = dict(zip(("x", "y", "width", "height"), area))
        if "Action" in interfaces and "NActions" not in errors and element["actions"]:
            known = {"click": "AXPress", "press": "AXPress", "show menu": "AXShowMenu", "frob": "AXFrob"}
            node["actions"] = [known[name] for name in element["actions"]]
        return node


def clipped(rectangle, area):
    """The part of a rectangle that is in the area, without a size when there is none."""
    if area is None:
        return tuple(rectangle)
    ends = [min(rectangle[i] + rectangle[i + 2], area[i] + area[i + 2]) for i in (0, 1)]
    begins = [max(rectangle[i], area[i]) for i in (0, 1)]
    return (*begins, *(max(0, end - begin) for begin, end in zip(begins, ends)))


def line(node):
    """The line of text of a record."""
    return " | ".join(node[key].replace("\n", " ") for key in ("role", "name", "description", "value") if key in node)


def rendering(nodes):
    """The whole text of these records."""
    left, lines = MAXIMUM_CHARACTERS, []
    for node in nodes:
        lines.append(line(node)[:left])
        left -= len(lines[-1]) + 1
    return "\n".join(lines)


def revision(nodes):
    """The hash of these records."""
    number = 0xcbf29ce484222325
    for node in nodes:
        enabled = {True: "1", False: "0", None: ""}[node.get("enabled")]
        fields = [node.get(key, "") for key in ("token", "role", "name", "description", "value", "automationId")]
        place = ",".join(str(node["bounds"][key]) for key in ("x", "y", "width", "height")) if "bounds" in node else ""
        for byte in ("|".join([*fields, enabled, place, ",".join(node.get("actions", []))]) + "\n").encode():
            number = (number ^ byte) * 0x100000001b3 % 2 ** 64
    return f"{number:x}"
