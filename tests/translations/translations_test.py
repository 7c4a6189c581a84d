#!/usr/bin/env python3
"""The catalogues against the texts that the code translates."""
import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]

# Files that translate texts out of tables of theirs, with the literals that are none of those; None where the texts
# are found otherwise.
TABLES = {
    "src/app/CmdLine.cpp": {"", " ", ":=", ".KX", "{}", "/{}", "{:<14}{}\\n"}
    | {"?", "RC", "D", "X", "C", "INST", "NOLOGIN", "U", "Q", "P", "MIRROR"},
    "src/app/AppConsole.cpp": None,
    "src/app/HealthText.cpp": None,
    "src/app/StandingText.cpp": None,
    "src/app/KalvexLog.cpp": {"", "RC: "},
    "src/console/LoginText.cpp": None,
    "src/console/ServerConnection.cpp": None,
    "src/console/ServerConnectionManager.cpp": None,
    "src/host/LinkStatements.cpp": {" \\t"},
    "src/host/LinkTests.cpp": {
        "ExecutePingThread",
        "ExecuteFtpConnectionThread",
        "ExecuteHttpConnectionThread",
        "\\r\\n",
        "FILEZILLA",
        "OPTS UTF8 OFF",
        # told to the script alone
        "Błąd FTP (%s)",
        "Błąd otwarcia sesji FTP",
        "Nie zdefiniowano w programie nazwy użytkownika FTP",
        "Nie zdefiniowano w programie adresu serwera FTP",
        "Połączenie FTP zostało przerwane",
    },
    "src/host/ProgramStatements.cpp": set(),
    # the reasons of src/platform/posix/LocalListener.cpp
    "src/programs/kalvexd/Service.cpp": None,
    # those of src/platform/UserStore.cpp
    "src/programs/sorvaned/Import.cpp": None,
    "src/sources/InterfaceClientConnection.cpp": {"NOBODY", "%s (%s)", "%s - %s (%s@%s)"},
    # its texts are the rows of src/operands/ScriptErrors.h
    "src/engine/ScriptRun.cpp": None,
    # those of src/vantrel/Codes.h
    "src/vantrel/Codes.cpp": None,
    # those of src/vantrel/network/Parcel.h
    "src/vantrel/network/NetworkTransport.cpp": None,
    "src/vantrel/network/ServerCall.cpp": None,
    # their texts are marked
    "src/app/KalvexApp.cpp": None,
    "src/console/ClientConsole.cpp": None,
    "src/workbench/model/ScheduleProof.cpp": None,
    "src/workbench/model/ScheduleWords.cpp": None,
    "src/workbench/model/ScriptTitle.cpp": None,
    "src/workbench/model/TrendCsv.cpp": None,
    "src/workbench/model/TrendScale.cpp": None,
    "src/workbench/model/UndoActions.cpp": None,
    "src/workbench/model/ValuesBeside.cpp": None,
    "src/workbench/qt/HistoryDialog.cpp": None,
    "src/workbench/qt/InsertVariablesDialog.cpp": None,
    "src/workbench/qt/KalvexWindowCommands.cpp": None,
    "src/workbench/qt/ScriptFiles.cpp": None,
    "src/workbench/qt/ScriptFrames.cpp": None,
    "src/workbench/qt/ScriptPrinter.cpp": None,
    "src/workbench/qt/Toolkit.cpp": None,
    "src/workbench/qt/TrendWindow.cpp": None,
    # its texts are marked there and in the tables of the language
    "src/workbench/model/KeywordHelp.cpp": None,
    "src/programs/glossary/Glossary.cpp": None,
    # their texts and those of src/platform/UserStore.cpp are marked
    "src/programs/ModuleLibraries.cpp": None,
    "src/programs/sorvaned/Tasks.cpp": None,
    "src/programs/kalvexctl/Console.cpp": None,
    "src/programs/kalvexctl/Endings.cpp": None,
    "src/programs/kalvexctl/Login.cpp": None,
    "src/programs/kalvexctl/SupervisionCommands.cpp": None,
    "src/server/ClientText.cpp": None,
    "src/vantrel/LoginDesk.cpp": None,
    "src/vantrel/Refusals.cpp": None,
    "src/server/Recorder.cpp": None,
    "src/platform/FigureText.cpp": None,
    "src/programs/sorvaned/Listening.cpp": None,
    "src/server/LateReports.cpp": None,
    "src/server/Server.cpp": None,
    "src/server/Session.cpp": None,
    # and those of src/server/Refusal.h
    "src/server/PlantAlarms.cpp": None,
    "src/server/SessionOrders.cpp": None,
    "src/vantrel/OrderWords.cpp": None,
    "src/sources/LostOrderText.cpp": None,
}

# Tables of the language, whose rows have help and usage that src/workbench/model/KeywordHelp.cpp translates. What is in
# capitals alone is the language's own.
HELP = [
    "src/language/Directives.cpp",
    "src/language/Functions.cpp",
    "src/language/Statements.cpp",
    "src/operands/Conditions.cpp",
    "src/operands/Operand.cpp",
    "src/operands/TimeProperties.cpp",
    "src/value/Status.cpp",
]

# Files with Polish texts that are no messages, or messages that stay Polish.
UNTRANSLATED = {
    # keys of profiles
    "src/app/ProfileKeys.h",
    # told to the script alone
    "src/host/LinkTests.cpp",
    # the one text of an error that is not translated
    "src/operands/ScriptErrors.h",
}


def read(path):
    """The text without includes and comments, a literal in pieces joined."""
    text = re.sub(r"(?m)^\s*(?:#include.*|//.*)$", "", (ROOT / path).read_text(encoding="utf-8"))
    return re.sub(r'"\s*"(?=[^"\n]*")', lambda m: '""' if m[0] == '""' else "", text)


def literals(text):
    return re.findall(r'"((?:[^"\\\n]|\\.)*)"', text)


def catalogue(path):
    entries = re.findall(r'(?m)^msgid "(.*)"\nmsgstr "(.*)"$', path.read_text(encoding="utf-8"))
    return {key: text for key, text in entries if key}


def translated():
    rows = re.findall(r'X\(\d+, \w+, "([^"]*)",\s*true\)', read("src/operands/ScriptErrors.h"))
    reasons = re.findall(r'X\(\d+, \w+, "([^"]*)"\)', read("src/vantrel/Codes.h"))
    faults = re.findall(r'X\(\w+, "([^"]+)"\)', read("src/vantrel/network/Parcel.h"))
    refusals = re.findall(r'X\(\w+, vantrel::\w+, "([^"]+)"\)', read("src/server/Refusal.h"))
    assert rows and reasons and faults and refusals
    texts = {*rows, *reasons, *faults, *refusals}
    for path in [*(ROOT / "src").rglob("*.cpp"), *(ROOT / "src").rglob("*.h")]:
        marked = r'\b(?:Translate\(|Translatable\(|Translated\([\w.]+,)\s*"((?:[^"\\]|\\.)*)"'
        texts.update(re.findall(marked, read(path.relative_to(ROOT))))
    for path in HELP:
        helps = {text for text in literals(read(path).replace("'\"'", "")) if re.search("[a-z]", text.replace("\\n", ""))}
        assert helps
        texts |= helps
    for path, others in TABLES.items():
        if others is not None:
            texts |= set(literals(read(path))) - others
    return texts


class Translations(unittest.TestCase):
    def test_every_file_that_translates_a_table_is_known(self):
        known = {"src/platform/Translator.cpp", "src/platform/GettextTranslator.cpp", *TABLES}
        for path in (ROOT / "src").rglob("*.cpp"):
            name = str(path.relative_to(ROOT))
            if re.search(r'\bTranslate\(\s*[^"\s]', read(name)):
                self.assertIn(name, known)

    def test_every_polish_text_is_translated(self):
        texts = translated()
        for path in [*(ROOT / "src").rglob("*.cpp"), *(ROOT / "src").rglob("*.h")]:
            name = str(path.relative_to(ROOT))
            if name in UNTRANSLATED:
                continue
            polish = {text for text in literals(read(name)) if re.search("[ąćęłńóśźżĄĆĘŁŃÓŚŹŻ]", text)}
            self.assertEqual(sorted(polish - texts), [], name)

    def test_every_text_has_a_translation_in_every_catalogue(self):
        for path in (ROOT / "translations").glob("*.po"):
            entries = catalogue(path)
            self.assertEqual(sorted(translated() - entries.keys()), [], path.name)
            self.assertEqual([key for key, text in entries.items() if not text], [], path.name)

    def test_no_catalogue_has_a_text_that_nothing_translates(self):
        for path in (ROOT / "translations").glob("*.po"):
            self.assertEqual(sorted(catalogue(path).keys() - translated()), [], path.name)

    def test_no_text_is_there_twice(self):
        for path in (ROOT / "translations").glob("*.po"):
            keys = re.findall(r"(?m)^msgid (.*)$", path.read_text(encoding="utf-8"))
            self.assertEqual(len(keys), len(set(keys)), path.name)

    def test_lines_of_scripts_are_found_in_every_language(self):
        for path in (ROOT / "translations").glob("*.po"):
            # The path of the script stands before it, the number behind it.
            self.assertRegex(catalogue(path)[" : Linia "], "^ : [^:]*[^: ] $", path.name)


if __name__ == "__main__":
    unittest.main()
