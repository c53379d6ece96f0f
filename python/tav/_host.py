"""The process that runs the plug-in on a recorded bus: prints what it finds as JSON."""
from __future__ import annotations

import json
import sys

from tav._error import Error
from tav._session import Session


def main() -> None:
    """The plug-in is the second argument. What is printed holds either ``devices`` or ``error``."""
    try:
        with Session(sys.argv[2]) as session:
            answer = {"devices": session.records()}
        print(json.dumps(answer))
    except Error as error:
        print(json.dumps({"error": error.args}))
