#pragma once

/// Clears the lines of `field` in a bitmap whose first byte is 1, and returns that byte.
int clear_without_exceptions(int field);
