"""Reads property lists with Python's plistlib and prints, as one JSON object,
each file's value in a canonical form that the C++ test builds the same way:
{"dict": {...}}, {"array": [...]}, {"string": s}, {"data": hex}, {"bool": b},
{"int": decimal of the value modulo 2**64}, {"real": hex of the IEEE bits or "nan"},
{"date": milliseconds since 2001-01-01 UTC}, {"uid": n}; {"error": text} when
plistlib refuses the file."""
import datetime
import json
import math
import plistlib
import struct
import sys

REFERENCE = datetime.datetime(2001, 1, 1)


def canonical(value):
    if value is None:  # an empty <plist/> element; the editor reads it as an empty dictionary
        return {"dict": {}}
    if isinstance(value, dict) and list(value) == ["CF$UID"] and type(value["CF$UID"]) is int:
        # A one-entry CF$UID dictionary is how XML carries a keyed archiver's UID.
        return {"uid": value["CF$UID"]}
    if isinstance(value, dict):
        return {"dict": {k: canonical(v) for k, v in value.items()}}
    if isinstance(value, list):
        return {"array": [canonical(v) for v in value]}
    if isinstance(value, str):
        return {"string": value}
    if isinstance(value, (bytes, bytearray)):
        return {"data": bytes(value).hex()}
    if isinstance(value, bool):
        return {"bool": value}
    if isinstance(value, int):
        return {"int": str(value % (1 << 64))}
    if isinstance(value, float):
        return {"real": "nan" if math.isnan(value) else struct.pack(">d", value).hex()}
    if isinstance(value, datetime.datetime):
        if value.tzinfo is not None:
            value = value.astimezone(datetime.timezone.utc).replace(tzinfo=None)
        delta = value - REFERENCE
        return {"date": round(delta.total_seconds() * 1000)}
    if isinstance(value, plistlib.UID):
        return {"uid": value.data}
    raise TypeError(type(value).__name__)


result = {}
for path in sys.argv[1:]:
    try:
        with open(path, "rb") as f:
            result[path] = canonical(plistlib.load(f))
    except Exception as e:  # noqa: BLE001 - any refusal is reported, not raised
        result[path] = {"error": "%s: %s" % (type(e).__name__, e)}
json.dump(result, sys.stdout)
