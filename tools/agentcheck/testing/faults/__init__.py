# SPDX-License-Identifier: BSD-3-Clause
"""Agents with one fault each."""
from . import in_absence, in_rows, in_values, in_walks  # noqa: F401
from .planting import FAULTS, catalogue, first_of, is_below  # noqa: F401

# Further rules that are broken by the same fault.
CONSEQUENCES = {
    "32 bits for 64": {"lowHalf"},
    "a negative ifIndex": {"pointerRow"},
    "an interface that is not there": {"pointerRow"},
    "AnIndexThatCanBeRead": {"noSuchInstance"},
    "AnInstanceThatCanBeRead": {"noSuchInstance"},
    "OneMoreRowEachTime": {"successor"},
    "NoEnd": {"endOfMibView"},
    "EndOfSomethingElse": {"endOfMibView"},
    "LargeBulkEndsEarly": {"ends"},
    "GetHasAnotherCounter": {"lowHalf"},
    "BulkRepeatsAll": {"complete"},
    "BulkRepeatsItself": {"bulks"},
    "Version1HasCounter64": {"otherVersion", "noSuchName"},
    "AWideCounterThatFalls": {"lowHalf"},
    "Version1ErrorsInVersion2": {"answered", "noSuchObject"},
    "AValueForWhatIsNotThere": {"noSuchName"},
    "BeginsAgainAtTheEnd": {"noSuchName"},
}
