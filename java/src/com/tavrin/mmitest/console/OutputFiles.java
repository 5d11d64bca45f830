package com.tavrin.mmitest.console;

import java.io.IOException;
import java.io.InputStream;
import java.nio.charset.StandardCharsets;
import java.nio.file.FileSystemException;
import java.nio.file.Files;
import java.nio.file.NoSuchFileException;
import java.nio.file.Path;
import java.util.List;
import java.util.Locale;

/**
 * The files a run writes its results to, checked before any work: a run that cannot keep its
 * results should not start, and a file that is not a results file of ours is never written over.
 * Paths are the user's: relative ones start at the working directory the console was started in.
 */
final class OutputFiles {
    private OutputFiles() {}

    /** An output file and the option that names it; the path is null when the option is not given. */
    record Output(String option, Path path) {}

    /** Throws IllegalArgumentException naming the option, the file and why it cannot be written. */
    static void check(List<Output> outputs) {
        for (int i = 0; i < outputs.size(); i++) {
            Output o = outputs.get(i);
            if (o.path() == null) {
                continue;
            }
            String why = unwritable(o.path());
            if (why != null) {
                throw new IllegalArgumentException(o.option() + " " + o.path() + ": " + why);
            }
            for (Output other : outputs.subList(0, i)) {
                if (other.path() != null && same(other.path(), o.path())) {
                    throw new IllegalArgumentException(other.option() + " and " + o.option() + " name the same file "
                            + o.path() + "; give each its own");
                }
            }
        }
    }

    private static boolean same(Path a, Path b) {
        return a.toAbsolutePath().normalize().equals(b.toAbsolutePath().normalize());
    }

    /** Why the file cannot take results, or null when it can. */
    static String unwritable(Path file) {
        Path absolute = file.toAbsolutePath();
        if (Files.isDirectory(absolute)) {
            return "is a folder; name a file in it";
        }
        Path folder = absolute.getParent();
        String shownFolder = file.getParent() == null ? "." : file.getParent().toString();
        if (folder == null || !Files.isDirectory(folder)) {
            return Files.exists(folder) ? shownFolder + " is not a folder" : "folder " + shownFolder + " does not exist";
        }
        if (Files.exists(absolute)) {
            if (!Files.isRegularFile(absolute) || !Files.isWritable(absolute)) {
                return "the file is not writable";
            }
            if (!isResults(absolute)) {
                return "the file exists and holds something other than results of mmi run; "
                        + "remove it or name another file";
            }
            return null;
        }
        return Files.isWritable(folder) ? null : "folder " + shownFolder + " is not writable";
    }

    /** Whether a file is empty or begins as the JUnit XML or JSON of a run, which a new run may replace. */
    static boolean isResults(Path file) {
        byte[] head;
        try (InputStream in = Files.newInputStream(file)) {
            head = in.readNBytes(512);
        } catch (IOException e) {
            return false;
        }
        String text = new String(head, StandardCharsets.UTF_8).stripLeading();
        return text.isEmpty() || text.contains("<testsuites name=\"mmi run\"")
                || (text.startsWith("{") && text.contains("\"passed\":"));
    }

    /** What went wrong, worded for the user: no exception class names. */
    static String reason(Exception e) {
        if (e instanceof NoSuchFileException) {
            return ((NoSuchFileException) e).getFile() + ": no such file or folder";
        }
        if (e instanceof FileSystemException) {
            FileSystemException f = (FileSystemException) e;
            return f.getFile() + ": " + (f.getReason() != null ? f.getReason().toLowerCase(Locale.ROOT)
                    : "cannot be written");
        }
        return e.getMessage() != null ? e.getMessage() : "cannot be written";
    }
}
