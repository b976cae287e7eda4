"""Prints the version and the instruction-set level: python3 -m sarnum."""
from . import build_info

print("sarnum {} ({})".format(*build_info()))
