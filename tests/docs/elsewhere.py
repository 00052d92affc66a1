# SPDX-License-Identifier: BSD-3-Clause
"""Who runs the commands that readers see, but for those that "commands" runs itself."""
import pathlib
import re

CI = ".ci/run"
INSTALL = "tests/install/CMakeLists.txt"

# command: the file that runs it, and the words there by which it does.
RUN_BY = {
    "./run demo": (CI, "./run demo"),
    "./run test": (CI, "./run test"),
    "./run test --vm": (CI, "options=(--vm)"),  # where there can be a virtual machine
    "./run fetch-vm": (CI, "./run fetch-vm"),
    "./run fuzz 60": (CI, "./run fuzz 60"),
    "./run package": (CI, "./run package --check"),
    "./run package --check": (CI, "./run package --check"),
    "./run help": ("tests/docs/commands", '"help"'),
    "tests/vm/vm COMMAND": ("tests/vm/CMakeLists.txt", '/vm" --time-limit'),
    "tests/viewer/screenshots PROGRAM docs":
        ("tests/viewer/screenshotcheck", 'with_name("screenshots")'),
    "cmake --build build/release --target docs":
        ("tests/docs/CMakeLists.txt", '--build "${PROJECT_BINARY_DIR}" --target docs'),
    "cmake --install build/release --prefix /usr":
        ("tests/install/prefix.cmake", '--install "${BUILD}" --prefix'),
    "cmake --install build/release --prefix PREFIX":
        ("tests/install/prefix.cmake", '--install "${BUILD}" --prefix'),
    "pkg-config --cflags --libs Qt5Palaver":
        ("tests/install/pkgconfigconsumer.cmake", "pkg-config --cflags --libs"),
    # These take them from the document.
    "cmake --preset external -DOCELLE_PLATFORM_DIR=/path/to/the/device/usr -DCMAKE_INSTALL_PREFIX=/usr":
        ("tests/install/external.cmake", 'documented(platform.md "cmake --preset external"'),
    "cmake --build --preset external":
        ("tests/install/external.cmake", 'documented(platform.md "cmake --build --preset external"'),
    "DESTDIR=/path/to/image cmake --install build/external":
        ("tests/install/external.cmake", 'documented(platform.md "DESTDIR="'),
    "cmake --preset release -DOCELLE_GPL_CODECS=OFF":
        ("tests/install/gplfree.cmake", 'documented(packages.md "cmake --preset release"'),
    "cmake --build --preset release":
        ("tests/install/gplfree.cmake", 'documented(packages.md "cmake --build --preset release"'),
    "apt-get install ./out/packages/ocelle-{backend,standin,bridge,tools}_*.deb":
        ("packaging/debian/inroot", 'bash -c "$install_line"'),
    'packaging/rpm/build out/rpm -D "platform_dir /path/to/the/device/usr"':
        ("packaging/rpm/check", "grep '^packaging/rpm/build ' docs/packages.md"),
}

# document: who runs what is in its blocks of the language sh, and how it gets at them.
BLOCKS_RUN_BY = {"examples/README.md": ("tests/install/examples", "'/^```sh$/,/^```$/{/^```/!p}' README.md")}

# file that runs commands: who runs it, and the words there. CI calls itself, CTest has all tests.
CALLED_BY = {
    "tests/docs/commands": ("tests/docs/CMakeLists.txt", "/commands"),
    "tests/install/examples": (INSTALL, '/examples" "${PROJECT_SOURCE_DIR}/examples"'),
    "tests/install/external.cmake": (INSTALL, " external.cmake)"),
    "tests/install/gplfree.cmake": (INSTALL, " gplfree.cmake)"),
    "tests/install/pkgconfigconsumer.cmake": (INSTALL, " pkgconfigconsumer.cmake)"),
    "tests/install/prefix.cmake": (INSTALL, " prefix.cmake)"),
    "tests/viewer/screenshotcheck": ("tests/viewer/CMakeLists.txt", "/screenshotcheck"),
    "packaging/debian/inroot": ("packaging/debian/check", "grep '^apt-get install ' \"$here/../../docs/packages.md\""),
    "packaging/debian/check": ("run", "packaging/debian/check out/packages"),
    "packaging/rpm/check": ("run", "packaging/rpm/check out/packages"),
    "run": (CI, "./run package --check"),
}

# Only CONTRIBUTING.md may show these, and tells in a part of its own that they are left out.
CONTRIBUTING = "CONTRIBUTING.md"
LEFT_OUT = "What continuous integration leaves out"
NOT_IN_CI = {
    "./run test --asan": "too long; before a release",
    "./run test --tsan": "too long; before a release",
    "./run coverage": "too long; before a release",
    "./run bench": "needs a machine that does nothing else; before a release",
    "./run bench --vm": "needs a machine that does nothing else; before a release",
    "./run demo --vm": "to be looked at; what it shows is tested in ./run test --vm",
    "ctest --test-dir build/release --build-config vm-long -L vm -R endurance":
        "too long; before a release",
    "./run format": "changes the sources; a test tells whether it would",
    "cmake --preset debug": "for the daily round",
    "ctest --test-dir build/debug -R NAME": "for the daily round",
}


def has(root, file, words):
    """Whether words stand in the file, outside of comments."""
    path = root / file
    lines = path.read_text().split("\n") if path.exists() else []
    return any(words in re.sub(r"(^|\s)#.*", "", line) for line in lines)


def wrong_entries(root, shown):
    """What of the tables above is not so, or not needed any more."""
    root = pathlib.Path(root)
    commands = {one.command for one in shown}
    wrong = [f'no document shows "{command}", which elsewhere.py knows'
             for command in [*RUN_BY, *NOT_IN_CI] if command not in commands]
    for what, (file, words) in [*RUN_BY.items(), *BLOCKS_RUN_BY.items(), *CALLED_BY.items()]:
        if not has(root, file, words):
            wrong.append(f"{file} does not run {what}: there is no {words}")
        if file != CI and not file.endswith("CMakeLists.txt") and file not in CALLED_BY:
            wrong.append(f"elsewhere.py does not tell who runs {file}")
    files = {file for table in (RUN_BY, BLOCKS_RUN_BY, CALLED_BY) for file, _ in table.values()}
    wrong += [f"{file} runs no command for elsewhere.py" for file in CALLED_BY if file not in files]
    told = {one.command for one in shown if one.document == CONTRIBUTING and one.heading == LEFT_OUT}
    return wrong + [f'{CONTRIBUTING} does not have "{command}" below "{LEFT_OUT}"'
                    for command in NOT_IN_CI if command not in told]


def runs_block_of(one):
    """Whether what a command is shown in is run as a whole."""
    return one.language == "sh" and one.document in BLOCKS_RUN_BY


def complaint(one):
    """What is wrong with a command that is shown and not run by "commands"; empty where nothing is."""
    if one.command in NOT_IN_CI:
        return "" if one.document == CONTRIBUTING else f"CI does not run it; only {CONTRIBUTING} may show it"
    if one.document == CONTRIBUTING and one.heading == LEFT_OUT:
        return f'it is below "{LEFT_OUT}", and not so in elsewhere.py'
    if one.command in RUN_BY or runs_block_of(one):
        return ""
    return "nobody runs it; elsewhere.py has to tell who does"
