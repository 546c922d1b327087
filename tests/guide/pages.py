"""The pages of the guide, in the order in which they are read. All but the last two begin with a sample and its output, and have a
table of messages. The one before the last shows what a program prints of logs that are kept in a folder of its name, and has a
table, too."""
WITH_PROGRAMS = ["first-program.md", "errors.md", "packages.md", "settings.md", "logging.md", "files.md", "system.md",
                 "streamtime.md", "sampling.md", "testing.md"]
WITH_OUTPUTS = [*WITH_PROGRAMS, "look.md"]
PATH = [*WITH_OUTPUTS, "shipping.md"]
