"""The changes the page asks of a session, by name. Each checks what it is given and raises a
StudioError with the person's message before it changes anything."""
import os
import tempfile
from dataclasses import replace

from .classes import (Edit, MAX_CLASSES, ColourClass, StudioError, check_name, from_text,
                      with_sample)
from .source import Picture, decode_picture


def number(body, key, low, high):
    value = body.get(key)
    if not isinstance(value, int) or isinstance(value, bool) or not low <= value <= high:
        raise StudioError(f"'{key}' must be a whole number from {low} to {high}.")
    return value


def add_class(s, body):
    classes = s.classes_list()
    if len(classes) >= MAX_CLASSES:
        raise StudioError(f"The segmenter takes at most {MAX_CLASSES} classes.")
    classes.append(ColourClass(check_name(body.get("name"), classes), dilate=s.dilate))
    s.change(classes)


def rename_class(s, body):
    classes, i = s.pick(body)
    classes[i] = replace(classes[i], name=check_name(body.get("name"), classes, skip=i))
    s.change(classes)


def delete_class(s, body):
    classes, i = s.pick(body)
    del classes[i]
    s.change(classes)


def move_class(s, body):
    # The earlier class wins pixels that two classes take, so the order matters.
    classes, i = s.pick(body)
    j = number(body, "to", 0, len(classes) - 1)
    classes.insert(j, classes.pop(i))
    s.change(classes)


def add_sample(s, body):
    classes, i = s.pick(body)
    classes[i] = with_sample(classes[i], s.sample(body))
    s.change(classes)


def remove_sample(s, body):
    classes, i = s.pick(body)
    samples = classes[i].samples
    if not samples:
        raise StudioError(f"The class {classes[i].name} has no pixels given to remove.")
    k = number(body, "sample", 0, len(samples) - 1)
    classes[i] = replace(classes[i], samples=samples[:k] + samples[k + 1:])
    s.change(classes)


def set_dilate(s, body):
    classes, i = s.pick(body)
    classes[i] = replace(classes[i], dilate=number(body, "dilate", -255, 255))
    s.change(classes)


def edit_mask(s, body):
    classes, i = s.pick(body)
    channel = number(body, "channel", 0, 2)
    low, high = number(body, "low", 0, 255), number(body, "high", 0, 255)
    if not isinstance(body.get("on"), bool):
        raise StudioError("'on' is true (take the range) or false (drop it).")
    edit = Edit(channel, min(low, high), max(low, high), body["on"])
    classes[i] = replace(classes[i], edits=classes[i].edits + (edit,))
    s.change(classes)


def use_channel(s, body):
    classes, i = s.pick(body)
    bit = 1 << number(body, "channel", 0, 2)
    used = body.get("used")
    if not isinstance(used, bool):
        raise StudioError("'used' is true or false.")
    channels = classes[i].channels | bit if used else classes[i].channels & ~bit
    classes[i] = replace(classes[i], channels=channels)
    s.change(classes)


def undo(s, body):
    s.history.undo()


def redo(s, body):
    s.history.redo()


def load_classes(s, body):
    text = body.get("text")
    if not isinstance(text, str):
        raise StudioError("'text' holds the class file's text.")
    s.change(from_text(text))


def save_classes(s, body):
    text = s.text()
    folder = os.path.dirname(s.out_path)
    try:
        # Written beside the file and renamed over it, so a failed write leaves the old one.
        handle, temporary = tempfile.mkstemp(dir=folder, prefix=".nuv_studio_")
        with os.fdopen(handle, "w") as out:
            out.write(text)
        os.replace(temporary, s.out_path)
    except OSError as error:
        raise StudioError(f"Cannot write {s.out_path}: {error.strerror}. The classes are "
                          "still here; save again once the folder is writable.", 500)
    return {"saved": s.out_path, "text": text}


def set_frame(s, body):
    index = number(body, "frame", 0, s.source.count - 1)
    s.source.frame(index)  # a frame past the video's real end is refused here
    s.frame_index = index


def set_run(s, body):
    run = body.get("minRun")
    if run not in ("auto", 2, 4):
        raise StudioError("The segmenter's minimum run is 2 or 4 ('auto' picks it by the "
                          "frame's width, as the segmenter does).")
    s.min_run = run


def open_picture(s, body):
    s.source = Picture(body["name"], decode_picture(body["data"]))
    s.frame_index = 0


OPERATIONS = {
    "class/add": add_class, "class/rename": rename_class, "class/delete": delete_class,
    "class/move": move_class, "class/sample": add_sample, "class/unsample": remove_sample,
    "class/dilate": set_dilate, "class/mask": edit_mask, "class/channel": use_channel,
    "undo": undo, "redo": redo, "classes/load": load_classes, "classes/save": save_classes,
    "frame": set_frame, "settings": set_run, "picture": open_picture,
}
