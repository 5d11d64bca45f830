package com.tavrin.mmitest.sim;

import java.util.Collections;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.Optional;

/**
 * What the simulated device knows about itself, as the device defines it: its services and their
 * operations, the healthy answers, the answer grammar and the fields of the app's
 * {@code MmiNativeManager} that the native library writes. {@link SimulatedDevice#catalogue()}
 * gives it; tools read these facts here rather than writing them down again.
 *
 * @param services the seven services, in the order the library connects them
 * @param keywords the words an answer may be instead of values
 * @param forms the forms of the values an answer lists, separated by commas
 * @param writtenFields the static String fields of {@code MmiNativeManager} that the library
 *     writes, so a test can put them back
 */
public record Catalogue(List<Service> services, List<Keyword> keywords, List<Form> forms, List<String> writtenFields) {
    public Catalogue {
        services = List.copyOf(services);
        keywords = List.copyOf(keywords);
        forms = List.copyOf(forms);
        writtenFields = List.copyOf(writtenFields);
    }

    /**
     * One service.
     *
     * @param name its name for tools: {@code "factory"}, {@code "display"}, ...
     * @param packageName the interface's package: {@code "vendor.tavrin.hardware.kxfactoryinterface"}
     * @param interfaceName {@code "IKxFactoryInterface"}
     * @param versions the versions it offers, oldest first: {@code ["1.0", "1.1"]}
     * @param instance the instance name it registers under
     * @param operations the operations the library calls, in position order
     */
    public record Service(String name, String packageName, String interfaceName, List<String> versions,
            String instance, List<Operation> operations) {
        public Service {
            versions = List.copyOf(versions);
            operations = List.copyOf(operations);
        }

        /** Whether it has a version 1.1, which the device can be told to withhold. */
        public boolean hasV11() {
            return versions.contains("1.1");
        }

        /** The operation of that name. */
        public Optional<Operation> operation(String name) {
            return operations.stream().filter(o -> o.name().equals(name)).findFirst();
        }

        /** The operations' names, in position order. */
        public List<String> operationNames() {
            return operations.stream().map(Operation::name).toList();
        }
    }

    /**
     * One operation of a service.
     *
     * @param service the service's name
     * @param name the operation's name, such as {@code "getFactoryInfo"}
     * @param version the version of the interface that declares it
     * @param position its transaction code
     * @param parameters what it takes
     * @param callback whether it answers through a callback rather than a returned value
     * @param answers the returned value, or the values it hands to its callback
     * @param shape {@code "value: int64 waitingTime"} or {@code "callback: int32 code, string value"}
     * @param healthyAnswer what a healthy device answers, as an answer text
     * @param healthyAnswerByKey where the healthy answer depends on the first argument (the info
     *     kind of {@code getFactoryInfo}): the answer for each such argument; others get
     *     {@code healthyAnswer}
     */
    public record Operation(String service, String name, String version, int position, List<Field> parameters,
            boolean callback, List<Field> answers, String shape, String healthyAnswer,
            Map<Integer, String> healthyAnswerByKey) {
        public Operation {
            parameters = List.copyOf(parameters);
            answers = List.copyOf(answers);
            healthyAnswerByKey = Collections.unmodifiableMap(new LinkedHashMap<>(healthyAnswerByKey));
        }
    }

    /**
     * A parameter or an answer value.
     *
     * @param type {@code "int32"}, {@code "int64"}, {@code "bool"}, {@code "string"},
     *     {@code "int32[]"}, {@code "FmdMsg"}, {@code "FmdOperation"} or {@code "DISPLAY_RET"}
     * @param name its name in the interface
     */
    public record Field(String type, String name) {}

    /**
     * A word an answer may be instead of values.
     *
     * @param word the keyword, written as the whole answer
     * @param callbackOnly whether only operations that answer through a callback take it
     * @param meaning what the service then does
     */
    public record Keyword(String word, boolean callbackOnly, String meaning) {}

    /**
     * A form of value.
     *
     * @param form its name: {@code "integer"}, {@code "string"}, {@code "word"}, ...
     * @param example one value in this form
     * @param meaning what it stands for
     */
    public record Form(String form, String example, String meaning) {}

    /** The services' names, in order. */
    public List<String> serviceNames() {
        return services.stream().map(Service::name).toList();
    }

    /** The service of that name. */
    public Optional<Service> service(String name) {
        return services.stream().filter(s -> s.name().equals(name)).findFirst();
    }

    /** The keywords an operation takes: the callback-only ones where it answers through a callback. */
    public List<Keyword> keywordsFor(Operation operation) {
        return keywords.stream().filter(k -> operation.callback() || !k.callbackOnly()).toList();
    }
}
