package com.tavrin.mmitest.console;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.PosixFilePermissions;
import java.time.OffsetDateTime;
import java.util.List;

import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.ValueSource;

/** Output files are judged before any work, and nothing but earlier results is written over. */
class OutputFilesTest {
    @TempDir
    Path dir;

    /** What is in the way, and the reason given. */
    @ParameterizedTest(name = "{0}")
    @CsvSource(delimiter = '|', value = {
        "no/such/r.xml | folder DIR/no/such does not exist",
        "plain/r.xml | DIR/plain is not a folder",
        "sub | is a folder",
        "capture.txt | holds something other than results",
        "notes.xml | holds something other than results",
        "link.json | is a symbolic link; name the file it points to",
        "dangling.json | is a symbolic link; name the file it points to",
        "LONG | file name too long"})
    void refused(String name, String reason) throws Exception {
        name = name.replace("LONG", "r".repeat(252) + ".xml");
        Files.writeString(dir.resolve("r.json"), "{\"generator\": \"mmi run\"}");
        Files.createSymbolicLink(dir.resolve("link.json"), dir.resolve("r.json"));
        Files.createSymbolicLink(dir.resolve("dangling.json"), dir.resolve("none.json"));
        Files.createDirectory(dir.resolve("sub"));
        Files.writeString(dir.resolve("plain"), "x");
        Files.writeString(dir.resolve("capture.txt"), "1000\n1001\n");
        Files.writeString(dir.resolve("notes.xml"), "<?xml version=\"1.0\"?><testsuites name=\"other\"/>");
        assertTrue(OutputFiles.unwritable(dir.resolve(name)).contains(reason.replace("DIR", dir.toString())),
                OutputFiles.unwritable(dir.resolve(name)));
    }

    /** A new file, an empty one, or the results of an earlier run, which CI writes again each time. */
    @ParameterizedTest
    @CsvSource(delimiter = '|', value = {"new.xml | -", "empty.json | ''",
        "old.xml | <?xml version=\"1.0\" encoding=\"UTF-8\"?>\\n<testsuites name=\"mmi run\" tests=\"66\">",
        "old.json | {\\n  \"generator\": \"mmi run\",\\n  \"passed\": false"})
    void accepted(String name, String content) throws Exception {
        if (!content.equals("-")) {
            Files.writeString(dir.resolve(name), content.replace("\\n", "\n"));
        }
        assertNull(OutputFiles.unwritable(dir.resolve(name)));
    }

    /**
     * A new file gets the permissions any new file gets (the umask's), so that another user's CI job
     * may read it; a replaced one keeps its own. The longest name a file system takes is written too.
     */
    @ParameterizedTest(name = "{0} {1}")
    @CsvSource(delimiter = '|', nullValues = "-", value = {"r.json | -", "r.json | rw-r--r--", "r.xml | rw-r-----",
        "r.xml | rw-rw-rw-", "LONG | -"})
    void writtenFilesKeepTheirPermissions(String name, String before) throws Exception {
        Path file = dir.resolve(name.replace("LONG", "r".repeat(250) + ".json"));
        String expected = PosixFilePermissions.toString(Files.getPosixFilePermissions(Files.createFile(
                dir.resolve("any"))));
        if (before != null) {
            Files.createFile(file, PosixFilePermissions.asFileAttribute(PosixFilePermissions.fromString(before)));
            Files.setPosixFilePermissions(file, PosixFilePermissions.fromString(before));
            expected = before;
        }
        assertNull(OutputFiles.unwritable(file));
        assertNull(OutputFiles.write(file, new RunReport("v", OffsetDateTime.now())::writeJson));
        assertEquals(List.of(expected, true), List.of(PosixFilePermissions.toString(Files.getPosixFilePermissions(file)),
                OutputFiles.isResults(file)));
    }

    @Test
    void oneFileForTwoOutputsIsRefused() {
        IllegalArgumentException e = assertThrows(IllegalArgumentException.class, () -> OutputFiles.check(List.of(
                new OutputFiles.Output("--junit", dir.resolve("r")), new OutputFiles.Output("--json", dir.resolve("./r")))));
        assertTrue(e.getMessage().startsWith("--junit and --json name the same file"), e.getMessage());
    }

    @Test
    void theMessageNamesTheOptionAndTheFileAsGiven() {
        IllegalArgumentException e = assertThrows(IllegalArgumentException.class, () -> OutputFiles.check(List.of(
                new OutputFiles.Output("--junit", null), new OutputFiles.Output("--json", Path.of("no/such/r.json")))));
        assertEquals("--json no/such/r.json: folder no/such does not exist", e.getMessage());
    }

    /**
     * A write that fails part way (a full disk) leaves the earlier results whole and no temporary
     * file beside them, and names the file and the reason in words.
     */
    @Test
    void aFailedWriteKeepsTheOldFile() throws Exception {
        Path file = dir.resolve("r.json");
        Files.writeString(file, "{\n  \"generator\": \"mmi run\"\n}\n");
        String failure = OutputFiles.write(file, out -> {
            out.write("{\"partial".getBytes());
            throw new java.io.IOException("No space left on device");
        });
        assertEquals(file + ": no space left on device", failure);
        assertEquals("{\n  \"generator\": \"mmi run\"\n}\n", Files.readString(file));
        try (var files = Files.list(dir)) {
            assertEquals(List.of(file), files.toList());
        }
    }

    /** What the console writes it may replace on the next run; a device file is written, never replaced. */
    @ParameterizedTest
    @ValueSource(strings = {"r.xml", "r.json", "/dev/null"})
    void writtenResultsMayBeReplacedByTheNextRun(String name) throws Exception {
        RunReport report = new RunReport("v", OffsetDateTime.now());
        Path file = dir.resolve(name);
        assertNull(OutputFiles.write(file, name.endsWith("xml") ? report::writeJunit : report::writeJson));
        assertNull(OutputFiles.unwritable(file));
        assertTrue(name.startsWith("/") ? !Files.isRegularFile(file) : OutputFiles.isResults(file));
    }
}
