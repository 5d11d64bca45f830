package com.tavrin.mmitest.console;

import java.io.FileDescriptor;
import java.io.FileOutputStream;
import java.io.IOException;
import java.io.OutputStream;
import java.io.OutputStreamWriter;
import java.io.PrintWriter;
import java.lang.reflect.Method;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.Collection;
import java.util.Comparator;
import java.util.List;
import java.util.Locale;
import java.util.concurrent.Callable;
import java.util.function.Function;
import java.util.stream.IntStream;

import com.tavrin.mmitest.sim.Catalogue;

import picocli.CommandLine;
import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.Model.OptionSpec;
import picocli.CommandLine.*;

/** The factory-test console: the native library in front of the simulated device; exit codes as listed below. */
@Command(name = "mmi", subcommands = {FactoryRun.class, CallCommand.class, HelpCommand.class},
        // The subcommands take the version, -h and -V, the options in their order and the heading of
        // the exit codes from here.
        scope = ScopeType.INHERIT, versionProvider = Console.class, mixinStandardHelpOptions = true,
        sortOptions = false,
        description = "The factory-test console: the native library in front of the simulated device.",
        exitCodeListHeading = "%nExit codes:%n",
        exitCodeList = {"0:done, every check passed", "1:a step, a check, the library or a write failed",
            "2:the command line was refused"})
public final class Console implements Callable<Integer>, IVersionProvider {
    static final int OK = 0;
    static final int FAILED = 1;
    static final int USAGE = 2;
    /**
     * Set by ./mmi before it builds the library: run only the checks that need no library, so that a
     * refused command line never waits for a build.
     */
    static final boolean CHECK_ONLY = Boolean.getBoolean("mmi.check-only");

    @Spec
    CommandSpec command;

    /** Something that stopped the command after its command line was accepted: exit 1, one line. */
    static final class Failure extends RuntimeException {
        private static final long serialVersionUID = 1L;

        Failure(String message) {
            super(message);
        }
    }

    public static void main(String[] args) {
        Sink out = new Sink(FileDescriptor.out);
        Sink err = new Sink(FileDescriptor.err);
        CommandLine line = commandLine(out, err);
        int code = line.execute(args);
        // A result that never reached its reader is no result: coreutils' rule for stdout. A reader
        // that stopped early (| head -1) has what it wanted, so that one goes unsaid, as it does
        // for a writer the pipe's signal ends.
        boolean lost = line.getOut().checkError();
        if (lost && !"broken pipe".equals(out.failure)) {
            line.getErr().println("mmi: cannot write standard output: " + out.failure);
        }
        System.exit(code == OK && (lost || line.getErr().checkError()) ? FAILED : code);
    }

    @Override
    public Integer call() {
        command.commandLine().usage(command.commandLine().getOut());
        return OK;
    }

    /** The version ./mmi computed and passed on, which the results files also carry. */
    static String version() {
        return System.getProperty("mmi.version", "unknown");
    }

    @Override
    public String[] getVersion() {
        return new String[] {"mmi " + version()};
    }

    /** A standard stream that remembers why a write failed, for the one line that says so. */
    static final class Sink extends FileOutputStream {
        String failure;

        Sink(FileDescriptor fd) {
            super(fd);
        }

        @Override
        public void write(byte[] bytes, int offset, int length) throws IOException {
            try {
                super.write(bytes, offset, length);
            } catch (IOException e) {
                failure = e.getMessage() == null ? "write error" : e.getMessage().toLowerCase(Locale.ROOT);
                throw e;
            }
        }
    }

    /** The console's command line, writing UTF-8 whatever the locale: device texts may carry any character. */
    static CommandLine commandLine(OutputStream out, OutputStream err) {
        CommandLine line = new CommandLine(new Console());
        line.setOut(new PrintWriter(new OutputStreamWriter(out, StandardCharsets.UTF_8), true));
        line.setErr(new PrintWriter(new OutputStreamWriter(err, StandardCharsets.UTF_8), true) {
            // Messages echo what the user typed and what a service sent: shown, never obeyed.
            @Override
            public void println(String message) {
                super.println(Terminal.printable(message));
            }
        });
        // Method arguments are taken as typed: "@x" is a text, not a file to read arguments from;
        // options may come before or after the method, and after "--" everything is an argument.
        line.setExpandAtFiles(false);
        line.registerConverter(FactoryRun.Steps.class, FactoryRun.Steps::parse);
        line.registerConverter(Drill.Fault.class, Drill.Fault::parse);
        line.registerConverter(DeviceOptions.StartDelay.class, DeviceOptions.StartDelay::parse);
        line.registerConverter(DeviceOptions.Answer.class, DeviceOptions.Answer::parse);
        line.setParameterExceptionHandler((e, args) -> {
            CommandLine where = e.getCommandLine();
            where.getErr().println(prefix(where) + reason(e, List.of(args)));
            return USAGE;
        });
        line.setExitCodeExceptionMapper(e -> e instanceof IllegalArgumentException ? USAGE : FAILED);
        line.setExecutionExceptionHandler((e, where, parsed) -> {
            boolean ours = e instanceof Failure || e instanceof IllegalArgumentException;
            where.getErr().println(prefix(where) + (ours ? e.getMessage() : "internal error: " + e));
            return where.getExitCodeExceptionMapper().getExitCode(e);
        });
        line.getSubcommands().get("run").getCommandSpec().usageMessage().footer(deviceNotes().toArray(new String[0]));
        line.getSubcommands().get("call").getCommandSpec().usageMessage().footer(callFooter());
        return line;
    }

    static String prefix(CommandLine line) {
        return line.getParent() == null ? "mmi: " : "mmi " + line.getCommandName() + ": ";
    }

    /** What was wrong with the command line (args as typed), naming the argument: one diagnosis each. */
    static String reason(ParameterException e, List<String> args) {
        if (e.getCause() instanceof TypeConversionException t) {
            // A converter may not know which option it serves: name it unless the message does.
            String option = e.getArgSpec() instanceof OptionSpec o ? o.longestName() : "";
            return t.getMessage().startsWith(option) ? t.getMessage() : option + ": " + t.getMessage();
        }
        // Every parameter but the options' values is optional: what is missing is an option's value.
        if (e instanceof MissingParameterException m && m.getMissing().get(0) instanceof OptionSpec o) {
            return o.longestName() + " needs a value";
        }
        if (e instanceof UnmatchedArgumentException u) {
            CommandLine where = e.getCommandLine();
            String first = u.getUnmatched().get(0);
            // Its first appearance is the one refused: past "--" it is no option, whatever it looks like.
            int dashes = args.indexOf("--");
            if (dashes >= 0 && args.indexOf(first) > dashes) {
                return "unexpected argument " + first + " (after --, every word is an argument)";
            }
            List<String> names = new ArrayList<>(where.getSubcommands().keySet());
            if (first.startsWith("-")) {
                where.getCommandSpec().options().forEach(o -> names.addAll(List.of(o.names())));
            }
            String hint = didYouMean(first.split("=", 2)[0], names, where.getCommandName().equals("call")
                    && first.startsWith("-") ? " (an argument that begins with - goes after --: mmi call METHOD -- "
                    + first + ")" : "");
            return (where.getParent() == null ? "unknown command " : first.startsWith("-") ? "unknown option "
                    : "unexpected argument ") + first + hint;
        }
        return e.getMessage();
    }

    /**
     * " (did you mean NAME?)" for the name a misspelt word was meant as, never the word itself: case,
     * or 2 edits at most and fewer than the word has letters past its dashes (--x is no -h); else otherwise.
     */
    static String didYouMean(String word, Collection<String> names, String otherwise) {
        Function<String, Integer> edits = name -> distance(word.toLowerCase(Locale.ROOT),
                name.toLowerCase(Locale.ROOT));
        int letters = word.replaceFirst("^-+", "").length();
        return names.stream().filter(name -> !name.equals(word)).min(Comparator.comparing(edits))
                .filter(name -> edits.apply(name) < Math.min(3, letters))
                .map(name -> " (did you mean " + name + "?)").orElse(otherwise);
    }

    /** Edits (insert, delete, replace a character) that turn a into b. */
    static int distance(String a, String b) {
        int[] row = IntStream.rangeClosed(0, b.length()).toArray();
        for (int i = 1; i <= a.length(); i++) {
            int diagonal = row[0];
            row[0] = i;
            for (int j = 1; j <= b.length(); j++) {
                int above = row[j];
                row[j] = Math.min(Math.min(row[j] + 1, row[j - 1] + 1),
                        diagonal + (a.charAt(i - 1) == b.charAt(j - 1) ? 0 : 1));
                diagonal = above;
            }
        }
        return row[b.length()];
    }

    /** SERVICE and ANSWER, for run and call, as the device names them when its library is there to ask. */
    private static List<String> deviceNotes() {
        List<String> services = DeviceOptions.serviceNames();
        String keywords = DeviceOptions.known().map(c -> String.join(", ", c.keywords().stream()
                .map(Catalogue.Keyword::word).toList()) + ", ").orElse("a keyword, ");
        return List.of("",
                "SERVICE  " + (services.isEmpty() ? "a service of the simulated device" : String.join(", ", services)),
                "ANSWER   " + keywords + "or values separated by commas:",
                "         7, true, \"text\", [1,2,3], bytes:HEX; quote the whole option for the",
                "         shell to keep the quotes (a bare word is taken as text:",
                "         power.getPowerState=5,x); mmi call --list-ops lists the operations",
                "         and their answers");
    }

    private static String[] callFooter() {
        List<String> lines = new ArrayList<>(deviceNotes());
        lines.addAll(List.of(
                "ARG      int, long: -12   boolean: true   String: '\"a\\u00e9\\n\"', a bare word,",
                "         or null   int[]: '[1,2,3]'   byte[]: x007fa5ff",
                "         BigDataValue, BigDataOperation: '{\"mVersion\":1,\"mBsn\":\"X\"}'",
                "         (fields left out keep their defaults)",
                "",
                "METHOD"));
        for (Method m : Natives.all()) {
            String signature = "  " + Natives.signature(m);
            // Help lines stay within 80 columns; a long signature goes on after its last comma
            // that fits, indented under the parameters.
            int cut = signature.length() < 80 ? -1 : signature.lastIndexOf(", ", 78);
            lines.add(cut < 0 ? signature : signature.substring(0, cut + 1));
            if (cut >= 0) {
                lines.add("      " + signature.substring(cut + 2));
            }
        }
        return lines.toArray(new String[0]);
    }
}
