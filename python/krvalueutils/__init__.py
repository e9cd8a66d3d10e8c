"""Checked conversions between plain Python values and robot records.

Values are plain Python objects: None (the invalid value), bool, int, float,
str and lists (a tuple reads as a list). Readers (``extract_..._from_krvalue``)
return their result and raise RuntimeError with the C++ library's message;
writers return the plain value. Lists of fixed-size numeric records come back
as numpy float32 arrays (numpy is needed for those functions only). Warnings
go to the logging logger "KRValueUtils".
"""

from ._krvalueutils import *  # noqa: F401,F403

from typing import List, Union

#: A value as plain Python objects, as readers take them and writers return
#: them: None (the invalid value), bool, int, float, str or a list of values.
Value = Union[None, bool, int, float, str, List["Value"]]
