"""What the tool prints as JSON is what docs/schema says, for made files, refused files and samples."""
import json
import os
import pathlib
import re
import sys
import unittest

from tool_support import FILES, ToolTest

SCHEMAS = pathlib.Path(sys.argv.pop(1))
SAMPLES = pathlib.Path(os.environ.get("TAVI_SAMPLES") or os.environ["TAVI_SAMPLES_DEFAULT"]) / "nitf"

TYPES = {"object": dict, "array": list, "string": str, "boolean": bool, "null": type(None)}
DESCRIPTIONS = {"$schema", "title", "description", "$defs"}


def has_type(value, name):
    if name == "integer":
        return isinstance(value, int) and not isinstance(value, bool)
    return isinstance(value, TYPES[name])


class Validator:
    """The part of JSON Schema (draft 2020-12) that the schemas use; any other keyword is an error of the schema."""

    def __init__(self, schema):
        self.root = schema

    def complaints(self, value, schema=None, path="$"):
        schema = self.root if schema is None else schema
        found = []
        for keyword, wanted in schema.items():
            if keyword not in DESCRIPTIONS:
                check = getattr(self, "check_" + keyword.lstrip("$"), None)
                if check is None:
                    raise ValueError(f"keyword {keyword} is not known")
                found += check(value, wanted, schema, path)
        return found

    def check_ref(self, value, wanted, schema, path):
        assert wanted.startswith("#/")
        target = self.root
        for step in wanted[2:].split("/"):
            target = target[step]
        return self.complaints(value, target, path)

    def check_type(self, value, wanted, schema, path):
        names = wanted if isinstance(wanted, list) else [wanted]
        return [] if any(has_type(value, name) for name in names) else [f"{path}: no {wanted}"]

    def check_enum(self, value, wanted, schema, path):
        return [] if value in wanted else [f"{path}: {value!r} is none of {wanted}"]

    def check_const(self, value, wanted, schema, path):
        return [] if value == wanted else [f"{path}: {value!r} is not {wanted!r}"]

    def check_minimum(self, value, wanted, schema, path):
        return [f"{path}: {value} < {wanted}"] if has_type(value, "integer") and value < wanted else []

    def check_maximum(self, value, wanted, schema, path):
        return [f"{path}: {value} > {wanted}"] if has_type(value, "integer") and value > wanted else []

    def check_pattern(self, value, wanted, schema, path):
        assert wanted.startswith("^") and wanted.endswith("$")
        whole = re.compile(wanted[1:-1])  # $ would let a line feed pass behind the end
        return [f"{path}: {value!r} is not {wanted}"] if isinstance(value, str) and not whole.fullmatch(value) else []

    def check_minItems(self, value, wanted, schema, path):
        return [f"{path}: fewer than {wanted}"] if isinstance(value, list) and len(value) < wanted else []

    def check_items(self, value, wanted, schema, path):
        if not isinstance(value, list):
            return []
        return [text for i, item in enumerate(value) for text in self.complaints(item, wanted, f"{path}[{i}]")]

    def check_required(self, value, wanted, schema, path):
        if not isinstance(value, dict):
            return []
        return [f"{path}: {key} is missing" for key in wanted if key not in value]

    def check_properties(self, value, wanted, schema, path):
        if not isinstance(value, dict):
            return []
        return [text for key, part in wanted.items() if key in value
                for text in self.complaints(value[key], part, f"{path}.{key}")]

    def check_additionalProperties(self, value, wanted, schema, path):
        assert wanted is False
        if not isinstance(value, dict):
            return []
        return [f"{path}: {key} is not known" for key in value if key not in schema["properties"]]

    def check_oneOf(self, value, wanted, schema, path):
        branches = [self.complaints(value, branch, path) for branch in wanted]
        if sum(not branch for branch in branches) == 1:
            return []
        return [f"{path}: {sum(not branch for branch in branches)} of oneOf fit", *sum(branches, [])]


def walk(schema):
    """Every schema within a schema."""
    yield schema
    for part in (*schema.get("properties", {}).values(), *schema.get("$defs", {}).values(), *schema.get("oneOf", ())):
        yield from walk(part)
    if "items" in schema:
        yield from walk(schema["items"])


class JsonSchema(ToolTest):
    def setUp(self):
        super().setUp()
        self.schemas = {name: json.loads((SCHEMAS / f"{name}.schema.json").read_text()) for name in ("info", "headers", "verify")}

    def examine(self, path):
        for name, schema in self.schemas.items():
            result = self.run_tool(name, "--json", path)
            self.assertIn(result.returncode, (0, 1))
            printed = json.loads(result.stdout)
            with self.subTest(command=name, file=path):
                self.assertEqual(Validator(schema).complaints(printed), [])
                error = printed[0].get("error") if name == "info" else printed.get("error")
                if name == "verify":
                    self.assertEqual(printed["findings"] == [], result.returncode == 0)
                    self.assertEqual(error is not None, printed["verdict"] == "refused")
                else:
                    self.assertEqual(error is None, result.returncode == 0)

    def test_made_files(self):
        files = sorted(FILES.iterdir())
        self.assertGreater(len(files), 20)
        for path in (*files, self.folder / "missing.ntf", self.folder):
            self.examine(path)

    def test_damaged_bytes(self):
        """Every byte of the headers, where text is expected, as one that is no ASCII."""
        data = (FILES / "mixed.ntf").read_bytes()
        for at in range(0, 404 + 450, 7):
            path = self.folder / "damaged.ntf"
            path.write_bytes(data[:at] + b"\xe9" + data[at + 1 :])
            self.examine(path)

    @unittest.skipUnless(SAMPLES.is_dir(), "no samples")
    def test_samples(self):
        for sample in json.loads((SAMPLES / "manifest.json").read_text())["files"]:
            self.examine(SAMPLES / sample["file"])

    def test_one_segment(self):
        printed = json.loads(self.check("headers", "--json", FILES / "full.ntf", "--segment", "image:1").stdout)
        self.assertEqual(Validator(self.schemas["headers"]).complaints(printed), [])

    def test_limits(self):
        schema = json.loads((SCHEMAS / "limits.schema.json").read_text())
        printed = json.loads(self.check("limits", "--json").stdout)
        self.assertEqual(Validator(schema).complaints(printed), [])
        self.assertNotEqual(Validator(schema).complaints([{**printed[0], "value": -1}]), [])

    def test_every_key_is_seen(self):
        """No property of the schemas is a promise that nothing keeps; labels belong to files that are refused, and
        test_verify.py cuts a file inside a look-up table."""
        for name, schema in self.schemas.items():
            seen = set()

            def note(value):
                if isinstance(value, dict):
                    seen.update(value)
                for part in value.values() if isinstance(value, dict) else value if isinstance(value, list) else ():
                    note(part)

            for path in FILES.iterdir():
                note(json.loads(self.run_tool(name, "--json", path).stdout))
            promised = {key for part in walk(schema) for key in part.get("properties", {})}
            self.assertEqual(promised - seen, {"LDLVL", "LALVL", "LLOC", "field_sub_index"} & promised)

    def test_schemas_refuse_what_is_wrong(self):
        info = json.loads(self.check("info", "--json", FILES / "full.ntf").stdout)
        headers = json.loads(self.check("headers", "--json", FILES / "full.ntf").stdout)

        def wrong(name, printed, *steps, **change):
            changed = json.loads(json.dumps(printed))
            place = changed
            for step in steps:
                place = place[step]
            for key, value in change.items():
                if value is None:
                    del place[key]
                else:
                    place[key] = value
            with self.subTest(steps=steps, change=change):
                self.assertNotEqual(Validator(self.schemas[name]).complaints(changed), [])

        wrong("info", info, 0, size="7")
        wrong("info", info, 0, size=True)
        wrong("info", info, 0, size=-1)
        wrong("info", info, 0, tres=None)
        wrong("info", info, 0, more=1)
        wrong("info", info, 0, FVER="02.00")
        wrong("info", info, 0, "tres", 0, block="XYZ")
        wrong("info", info, 0, "tres", 0, tag="SEVENTH")
        wrong("info", info, 0, "tres", 0, overruns=0)
        wrong("info", info, 0, "segments", 0, IREP="\u0100")
        wrong("info", info, 0, "segments", 0, data_offset=None)
        wrong("headers", headers, segments={})
        wrong("headers", headers, "segments", 0, fields=[])
        wrong("headers", headers, "segments", 0, kind="picture")
        wrong("headers", headers, "segments", 0, "fields", 0, text=None)
        wrong("headers", headers, "segments", 0, "fields", 0, number=1)
        wrong("headers", headers, "segments", 0, "fields", 0, length=-1)
        wrong("headers", headers, "segments", 0, "fields", 0, text="\u2026")
        verify = json.loads(self.check("verify", "--json", FILES / "full.ntf", status=1).stdout)
        wrong("verify", verify, verdict="good")
        wrong("verify", verify, omitted=None)
        wrong("verify", verify, "findings", 0, field=7)
        wrong("verify", verify, "findings", 0, found="\u0100")
        wrong("verify", verify, "findings", 0, expected=None)
        with self.assertRaises(ValueError):
            Validator({"maxLength": 3}).complaints("long")


if __name__ == "__main__":
    unittest.main()
