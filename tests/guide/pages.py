"""The pages of the guide, in the order in which they are read. All but the last begin with a sample and its output, and have a
table of messages."""
WITH_PROGRAMS = ["first-program.md", "errors.md", "packages.md", "settings.md", "logging.md", "files.md", "system.md",
                 "streamtime.md", "sampling.md", "testing.md"]
PATH = [*WITH_PROGRAMS, "shipping.md"]
