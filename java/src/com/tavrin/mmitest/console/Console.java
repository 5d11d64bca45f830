package com.tavrin.mmitest.console;

import java.io.FileDescriptor;
import java.io.FileOutputStream;
import java.io.OutputStreamWriter;
import java.io.PrintWriter;
import java.lang.reflect.Method;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.Callable;

import picocli.CommandLine;
import picocli.CommandLine.Command;
import picocli.CommandLine.MissingParameterException;
import picocli.CommandLine.Model.OptionSpec;
import picocli.CommandLine.ParameterException;
import picocli.CommandLine.TypeConversionException;
import picocli.CommandLine.UnmatchedArgumentException;

/**
 * The factory-test console: the native library in front of the simulated device.
 *
 * <p>Exit codes: 0 done, 1 the library, a step or the drill failed, 2 a command line the console
 * refuses.
 */
@Command(name = "mmi", subcommands = {FactoryRun.class, CallCommand.class, CommandLine.HelpCommand.class},
        versionProvider = Console.Version.class, mixinStandardHelpOptions = true,
        description = "The factory-test console: the native library in front of the simulated device.",
        exitCodeListHeading = "%nExit codes:%n",
        exitCodeList = {"0:done, every check passed", "1:a step, a check or the library failed",
            "2:the command line was refused, or an output file cannot be written"})
public final class Console implements Callable<Integer> {
    static final int OK = 0;
    static final int FAILED = 1;
    static final int USAGE = 2;

    /** The command line this command runs in; set when the console's command line is made. */
    CommandLine line;

    public static void main(String[] args) {
        CommandLine line = commandLine();
        int code = line.execute(args);
        line.getOut().flush();
        line.getErr().flush();
        System.exit(code);
    }

    @Override
    public Integer call() {
        line.usage(line.getOut());
        return OK;
    }

    /** The version ./mmi computed and passed on, which the results files also carry. */
    static String version() {
        return System.getProperty("mmi.version", "unknown");
    }

    static final class Version implements CommandLine.IVersionProvider {
        @Override
        public String[] getVersion() {
            return new String[] {"mmi " + version()};
        }
    }

    /** The console's command line, writing UTF-8 whatever the locale: device texts may carry any character. */
    static CommandLine commandLine() {
        Console console = new Console();
        CommandLine line = new CommandLine(console);
        console.line = line;
        CommandLine run = line.getSubcommands().get("run");
        CommandLine call = line.getSubcommands().get("call");
        ((FactoryRun) run.getCommand()).commandLine = run;
        ((CallCommand) call.getCommand()).commandLine = call;
        line.setOut(new PrintWriter(new OutputStreamWriter(new FileOutputStream(FileDescriptor.out),
                StandardCharsets.UTF_8), true));
        line.setErr(new PrintWriter(new OutputStreamWriter(new FileOutputStream(FileDescriptor.err),
                StandardCharsets.UTF_8), true) {
            // Messages echo what the user typed: a control character in it is shown, not obeyed.
            @Override
            public void println(String message) {
                super.println(Terminal.printable(message));
            }
        });
        // Method arguments are taken as typed: "@x" is a text, not a file to read arguments from;
        // options may come before or after the method, and after "--" everything is an argument.
        line.setExpandAtFiles(false);
        line.setParameterExceptionHandler(Console::refuse);
        run.getCommandSpec().usageMessage().footer(DEVICE_NOTES.toArray(new String[0]));
        call.getCommandSpec().usageMessage().footer(callFooter());
        return line;
    }

    private static int refuse(ParameterException e, String[] args) {
        CommandLine line = e.getCommandLine();
        boolean top = line.getParent() == null;
        line.getErr().println((top ? "mmi" : "mmi " + line.getCommandName()) + ": " + reason(e));
        if (top) {
            line.usage(line.getErr());
        }
        return USAGE;
    }

    /** What was wrong with the command line, naming the argument. */
    static String reason(ParameterException e) {
        if (e.getCause() instanceof TypeConversionException) {
            // A converter may not know which option it serves: name it unless the message does.
            String message = e.getCause().getMessage();
            if (e.getArgSpec() instanceof OptionSpec) {
                String option = ((OptionSpec) e.getArgSpec()).longestName();
                return message.contains(option) ? message : option + ": " + message;
            }
            return message;
        }
        if (e instanceof MissingParameterException) {
            for (CommandLine.Model.ArgSpec missing : ((MissingParameterException) e).getMissing()) {
                if (missing instanceof OptionSpec) {
                    return ((OptionSpec) missing).longestName() + " needs a value";
                }
            }
        }
        if (e instanceof UnmatchedArgumentException) {
            List<String> unmatched = ((UnmatchedArgumentException) e).getUnmatched();
            if (e.getCommandLine().getParent() == null) {
                return "unknown command: " + String.join(" ", unmatched);
            }
            String first = unmatched.get(0);
            if (!first.startsWith("-")) {
                return "unexpected argument " + first;
            }
            boolean call = e.getCommandLine().getCommandName().equals("call");
            return "unknown option " + first + (call ? " (an argument that begins with - goes after --: "
                    + "mmi call METHOD -- " + first + ")" : "");
        }
        return e.getMessage();
    }

    /** SERVICE and ANSWER, for run and call. */
    private static final List<String> DEVICE_NOTES = List.of("",
            "SERVICE  " + String.join(", ", DeviceOptions.SERVICES),
            "ANSWER   nocallback, transport-error, crash, or values separated by commas:",
            "         7, true, \"text\", [1,2,3], bytes:HEX; quote the whole option for the",
            "         shell to keep the quotes (a bare word is taken as text:",
            "         power.getPowerState=5,x); mmi call --list-ops lists the operations",
            "         and their answers");

    private static String[] callFooter() {
        List<String> lines = new ArrayList<>(DEVICE_NOTES);
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
            if (cut < 0) {
                lines.add(signature);
            } else {
                lines.add(signature.substring(0, cut + 1));
                lines.add("      " + signature.substring(cut + 2));
            }
        }
        return lines.toArray(new String[0]);
    }
}
