"""The examples are scripts beside these tests, not a package."""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parent))
