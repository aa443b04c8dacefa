import os

from hypothesis import HealthCheck, settings

# Examples are drawn from a fixed seed: the same run on every machine. ZEPBMP_TEST_ROUNDS asks for more of them.
settings.register_profile(
    "zepbmp",
    deadline=None,
    derandomize=True,
    database=None,
    max_examples=100 * int(os.environ.get("ZEPBMP_TEST_ROUNDS", "1")),
    suppress_health_check=[HealthCheck.too_slow],
)
settings.load_profile("zepbmp")
