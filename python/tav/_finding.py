"""Where the plug-in's file stands."""
from __future__ import annotations

import os
import sys
import sysconfig
from typing import List, Optional

from tav._error import PluginNotFoundError

VARIABLE = "TAV_PLUGIN"


def _places_on_windows() -> List[str]:
    folders = [sys.prefix, *os.environ.get("PATH", "").split(os.pathsep)]
    return [os.path.join(folder, "zotavpci.dll") for folder in folders if os.path.isabs(folder)]


def _places_elsewhere() -> List[str]:
    multiarch = sysconfig.get_config_var("MULTIARCH")
    libraries = ["lib64", "lib"]
    if multiarch:
        libraries.insert(0, os.path.join("lib", multiarch))
    prefixes = dict.fromkeys((sys.prefix, "/usr/local", "/usr"))
    return [os.path.join(prefix, library, "zotavpci", "zotavpci.so")
            for prefix in prefixes for library in libraries]


def default_places() -> List[str]:
    """Where :func:`find_plugin` looks, in order, when it is told nothing."""
    return _places_on_windows() if sys.platform == "win32" else _places_elsewhere()


def find_plugin(plugin: Optional[str] = None) -> str:
    """The path of the plug-in's file.

    That is what is given; else what the environment variable ``TAV_PLUGIN`` names, unless Python
    was told to ignore its environment (``python -I``); else the first that there is of where
    ``make install`` and packages put it: below ``sys.prefix``, ``/usr/local`` and ``/usr``. On
    Windows it is looked for in ``sys.prefix`` and in the folders of ``PATH``.

    Raises :class:`tav.PluginNotFoundError`.
    """
    named = plugin
    if named is None and not sys.flags.ignore_environment:
        named = os.environ.get(VARIABLE) or None
    places = default_places() if named is None else [os.path.abspath(named)]
    for place in places:
        if os.path.isfile(place):
            return place
    raise PluginNotFoundError("find plug-in", named or "",
                              "there is no " + ", no ".join(places))
