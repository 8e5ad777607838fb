# The library itself.
