"""Holds a file of test results against what build servers read: elements, attributes, counts."""
import sys
import xml.etree.ElementTree as tree

CHILDREN = {
    "testsuites": {"testsuite"},
    "testsuite": {"properties", "testcase"},
    "properties": {"property"},
    "testcase": {"failure", "error", "skipped", "system-out"},
}
ATTRIBUTES = {
    "testsuites": {"tests", "failures", "errors", "skipped", "time"},
    "testsuite": {"name", "tests", "failures", "errors", "skipped", "time"},
    "property": {"name", "value"},
    "testcase": {"classname", "name", "time"},
    "failure": {"message", "type"},
    "error": {"message", "type"},
    "skipped": {"message"},
}


def check(element):
    expected = ATTRIBUTES.get(element.tag, set())
    assert set(element.attrib) == expected, f"{element.tag} has {sorted(element.attrib)}"
    for child in element:
        assert child.tag in CHILDREN.get(element.tag, ()), f"{child.tag} stands in {element.tag}"
        check(child)


root = tree.parse(sys.argv[1]).getroot()
assert root.tag == "testsuites", root.tag
check(root)
for suite in [root, *root.iter("testsuite")]:
    cases = list(suite.iter("testcase"))
    assert cases and int(suite.get("tests")) == len(cases)
    for attribute, tag in (("failures", "failure"), ("errors", "error"), ("skipped", "skipped")):
        assert int(suite.get(attribute)) == len(list(suite.iter(tag))), attribute
    assert all(float(case.get("time")) >= 0 for case in cases)
print(len(list(root.iter("testcase"))), "cases")
