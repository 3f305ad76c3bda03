// Names and values that mean something to a shell, a format, a path or a parser.
#pragma once

#include <string>

namespace fairlead_test {

inline const std::string kHostileNames[] = {"..",
                                            ".",
                                            "a/../b",
                                            "../../tmp/outside",
                                            "a b",
                                            "a\"b",
                                            "a'b",
                                            "a\nb",
                                            "a\tb",
                                            "a\\b",
                                            "-rf",
                                            "*",
                                            "$(touch /tmp/ran)",
                                            "`touch /tmp/ran`",
                                            ";touch /tmp/ran",
                                            "|touch /tmp/ran",
                                            "&touch /tmp/ran",
                                            "x/$(touch /tmp/ran)/y",
                                            "a\n/tmp/ran",
                                            "%s%n%d",
                                            "%%",
                                            "{\"a\":1}",
                                            "a,b",
                                            "a[b]",
                                            "\xff\xfe\x80",
                                            "\x01\x1b[2J",
                                            std::string(255, 'n'),
                                            std::string(4096, 'n'),
                                            std::string(300, '/'),
                                            std::string(2000, '%')};

}  // namespace fairlead_test
