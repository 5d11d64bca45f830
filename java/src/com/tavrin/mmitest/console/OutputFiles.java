package com.tavrin.mmitest.console;

import java.io.IOException;
import java.io.InputStream;
import java.io.OutputStream;
import java.nio.charset.StandardCharsets;
import java.security.SecureRandom;
import java.nio.file.AccessDeniedException;
import java.nio.file.FileAlreadyExistsException;
import java.nio.file.FileSystemException;
import java.nio.file.LinkOption;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.util.List;
import java.util.Locale;

/**
 * The files a run writes its results to, checked before any work: a run that cannot keep its
 * results should not start, and a file the console did not write is never written over. A file is
 * written beside itself and renamed over the old one, so a full disk or a kill leaves the old one
 * whole. Paths are the user's: relative ones start at the folder the console was started in.
 */
final class OutputFiles {
    /** What each results file carries so that a later run knows it may replace it. */
    static final String MARK = "mmi run";

    /** The longest file name, in bytes, the usual file systems take. */
    private static final int NAME_MAX = 255;

    private OutputFiles() {}

    /** An output file and the option that names it; the path is null when the option is not given. */
    record Output(String option, Path path) {}

    /** What writes a file's content. */
    interface Content {
        void write(OutputStream out) throws Exception;
    }

    /** Throws IllegalArgumentException naming the option, the file and why it cannot be written. */
    static void check(List<Output> outputs) {
        List<Output> given = outputs.stream().filter(o -> o.path() != null).toList();
        for (int i = 0; i < given.size(); i++) {
            Output o = given.get(i);
            if (o.path().toString().isEmpty()) {
                throw new IllegalArgumentException(o.option() + " needs a file name");
            }
            String why = unwritable(o.path());
            if (why != null) {
                throw new IllegalArgumentException(o.option() + " " + o.path() + ": " + why);
            }
            for (Output other : given.subList(0, i)) {
                if (same(other.path(), o.path())) {
                    throw new IllegalArgumentException(other.option() + " and " + o.option() + " name the same file "
                            + o.path() + "; give each its own");
                }
            }
        }
    }

    /** Why the file cannot take results, or null when it can. */
    static String unwritable(Path file) {
        if (file.toString().equals("-")) {
            return "the results go to a file (standard output shows the table); name one";
        }
        // Under another name (/dev/stdout, or the file standard output is redirected to) the
        // results would mix into the table or replace it; /dev/null takes both without harm.
        if (same(file, STANDARD_OUTPUT) && !same(file, Path.of("/dev/null"))) {
            return "is where standard output goes (the table); name another file";
        }
        Path absolute = file.toAbsolutePath();
        if (file.getFileName() != null && file.getFileName().toString().getBytes(StandardCharsets.UTF_8).length
                > NAME_MAX) {
            return "file name too long";
        }
        // The rename would put a plain file where the link was; a link to a device is written through.
        if (Files.isSymbolicLink(absolute) && (!Files.exists(absolute) || Files.isRegularFile(absolute))) {
            return "is a symbolic link; name the file it points to";
        }
        if (Files.isDirectory(absolute)) {
            return "is a folder; name a file in it";
        }
        Path folder = absolute.getParent();
        String shownFolder = file.getParent() == null ? "." : file.getParent().toString();
        if (folder == null || !Files.isDirectory(folder)) {
            return Files.exists(folder) ? shownFolder + " is not a folder"
                    : "folder " + shownFolder + " does not exist";
        }
        if (Files.exists(absolute) && !Files.isRegularFile(absolute)) {
            // A device such as /dev/null is written as it is, never replaced.
            return Files.isWritable(absolute) ? null : "permission denied";
        }
        if (Files.exists(absolute) && !isResults(absolute)) {
            return "the file exists and holds something other than results of mmi run; "
                    + "remove it or name another file";
        }
        return Files.isWritable(folder) ? null : "folder " + shownFolder + " is not writable";
    }

    /** Whether a file is empty or carries the mark of a run's results, which a new run may replace. */
    static boolean isResults(Path file) {
        byte[] head;
        try (InputStream in = Files.newInputStream(file)) {
            head = in.readNBytes(512);
        } catch (IOException e) {
            return false;
        }
        String text = new String(head, StandardCharsets.UTF_8).stripLeading();
        return text.isEmpty() || text.contains("<testsuites name=\"" + MARK + "\"")
                || text.startsWith("{") && text.contains("\"generator\": \"" + MARK + "\"");
    }

    /**
     * Writes the file through a temporary file beside it, renamed over it once complete; a device
     * file is written directly. Null when written, else the file and the reason in the user's words.
     */
    static String write(Path file, Content content) {
        boolean device = Files.exists(file) && !Files.isRegularFile(file);
        Path temporary = null;
        try {
            if (!device) {
                temporary = temporaryBeside(file);
            }
            try (OutputStream out = Files.newOutputStream(device ? file : temporary)) {
                content.write(out);
            }
            if (!device) {
                Files.move(temporary, file, StandardCopyOption.REPLACE_EXISTING, StandardCopyOption.ATOMIC_MOVE);
            }
            return null;
        } catch (Exception e) {
            try {
                if (temporary != null) {
                    Files.deleteIfExists(temporary);
                }
            } catch (IOException ignored) {
                // The reason the write failed is the one to report.
            }
            return file + ": " + reason(e);
        }
    }

    /**
     * A new empty file beside the target, made as any new file is (the umask applies, so a CI job
     * of another user can read the results), or with the permissions of the file it will replace.
     */
    static Path temporaryBeside(Path file) throws IOException {
        Path absolute = file.toAbsolutePath();
        String name = absolute.getFileName().toString();
        // Room for the dot, the random part and the suffix within the longest name.
        while (name.getBytes(StandardCharsets.UTF_8).length > NAME_MAX - 32) {
            name = name.substring(0, name.offsetByCodePoints(name.length(), -1));
        }
        for (int attempt = 0;; attempt++) {
            Path temporary = absolute.resolveSibling("." + name + "." + Long.toUnsignedString(RANDOM.nextLong(), 36)
                    + ".tmp");
            try {
                Files.createFile(temporary);
            } catch (FileAlreadyExistsException e) {
                if (attempt < 10) {
                    continue;
                }
                throw e;
            }
            if (Files.isRegularFile(absolute, LinkOption.NOFOLLOW_LINKS)) {
                try {
                    Files.setPosixFilePermissions(temporary, Files.getPosixFilePermissions(absolute));
                } catch (UnsupportedOperationException e) {
                    // A file system without POSIX permissions has none to keep.
                } catch (IOException e) {
                    Files.deleteIfExists(temporary);
                    throw e;
                }
            }
            return temporary;
        }
    }

    private static final SecureRandom RANDOM = new SecureRandom();

    /** This process's standard output, whatever file, pipe or terminal it is. */
    private static final Path STANDARD_OUTPUT = Path.of("/proc/self/fd/1");

    /** Whether two paths name one file: the same path, or one file (both there) under two names. */
    static boolean same(Path a, Path b) {
        Path x = a.toAbsolutePath().normalize();
        Path y = b.toAbsolutePath().normalize();
        try {
            return x.equals(y) || Files.exists(x) && Files.exists(y) && Files.isSameFile(x, y);
        } catch (IOException e) {
            return false;  // what cannot be examined is judged by the checks that follow
        }
    }

    /** What went wrong, worded for the user: no exception class names. */
    static String reason(Exception e) {
        Throwable cause = e;
        while (cause.getCause() != null && !(cause instanceof IOException)) {
            cause = cause.getCause();
        }
        String reason = cause instanceof AccessDeniedException ? "permission denied"
                : cause instanceof FileSystemException f ? f.getReason() : cause.getMessage();
        return reason == null ? "cannot be written" : reason.toLowerCase(Locale.ROOT);
    }
}
