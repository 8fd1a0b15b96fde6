"""Shows tasks, packages and events in gdb: (gdb) source scripts/gdb-printers.py

    (gdb) print *event
    $1 = event "backup", created, 0 ended = {
      package "music", created, at 1 = {task "digest-1", succeeded, task "pack-2", active}, ...}

Works for objects of the library, for the interfaces that a host holds, and for handles of
temvar/handles.h. The library must have been built with debug information.
"""

import gdb

STATES = {0: "created", 1: "succeeded", 2: "active", 5: "cancelled", 6: "failed", 7: "paused"}
CLASSES = ("temvar::RkTaskEventImpl", "temvar::RkTaskPackageImpl", "temvar::RkTaskImpl")


def atomic(value):
    return int(value["_M_i"])


def pointees(vector):
    """The objects that a vector of references holds."""
    node, end = vector["_M_impl"]["_M_start"], vector["_M_impl"]["_M_finish"]
    while node != end:
        yield node.dereference()["object_"]
        node += 1


def implementation(value):
    """The object of the library that is a task of any kind, or None.

    The words before the table of virtual functions lead from an interface to the whole object, and
    the name of the table is that of its class (gdb's dynamic_cast does not get through the virtual
    bases; seen with gdb 13).
    """
    if value.address is None:
        return None
    word = gdb.lookup_type("long")
    table = value.address.cast(word.pointer().pointer()).dereference()
    symbol = gdb.execute("info symbol %d" % int(table), to_string=True)
    for name in CLASSES:
        if symbol.startswith("vtable for %s " % name):
            whole = int(value.address) + int((table - 2).dereference())
            return name, gdb.Value(whole).cast(gdb.lookup_type(name).pointer()).dereference()
    return None


class TaskPrinter:
    """One line for the task itself; the tasks and packages in it are its children."""

    def __init__(self, name, task):
        self.kind = name
        self.task = task.cast(gdb.lookup_type(name))

    def to_string(self):
        text = self.task["name_"]["_M_dataplus"]["_M_p"].string("utf-8", "replace")
        state = atomic(self.task["state_"])
        words = '"%s", %s' % (text, STATES.get(state, state))
        if self.kind.endswith("EventImpl"):
            return "event %s, %d ended" % (words, atomic(self.task["finishedPackages_"]))
        if self.kind.endswith("PackageImpl"):
            return "package %s, at %d" % (words, atomic(self.task["currentIndex_"]))
        return "task " + words

    def children(self):
        field = {"Event": "packages_", "Package": "tasks_"}
        for kind, name in field.items():
            if self.kind.endswith(kind + "Impl"):
                for index, child in enumerate(pointees(self.task[name])):
                    yield str(index), child.dereference() if int(child) != 0 else child

    def display_hint(self):
        return "array" if self.kind != "temvar::RkTaskImpl" else None


class HandlePrinter:
    """A handle shows what it holds."""

    def __init__(self, value):
        self.object = value["object_"]

    def to_string(self):
        return "nothing" if int(self.object) == 0 else self.object.dereference()


def look_up(value):
    name = value.type.unqualified().strip_typedefs().name or ""
    if name.startswith("tmv::Ref<") or name.startswith("temvar::Ref<"):
        return HandlePrinter(value)
    if name in ("RkTask", "RkTaskEvent", "RkTaskPackage") or name in CLASSES:
        found = implementation(value)
        return TaskPrinter(*found) if found else None
    return None


gdb.pretty_printers.append(look_up)
