"""The pages of the guide, in the order in which they are read."""
PATH = ["first-program.md", "errors.md", "packages.md", "settings.md", "logging.md", "files.md", "system.md",
        "streamtime.md", "sampling.md", "testing.md"]
WITH_PROGRAMS = PATH  # begin with a sample and its output, and have a table of messages
