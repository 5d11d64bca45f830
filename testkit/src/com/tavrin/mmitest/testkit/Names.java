package com.tavrin.mmitest.testkit;

import com.tavrin.mmitest.sim.Catalogue;
import com.tavrin.mmitest.sim.SimulatedDevice;

import java.util.List;
import java.util.stream.Collectors;

/** Services, operations and answers as the device's catalogue names them, checked with messages that list them. */
final class Names {
    /** The answer keyword whose service comes back on its own. */
    static final String CRASH = "crash";

    private Names() {}

    static List<String> services() {
        return SimulatedDevice.catalogue().serviceNames();
    }

    static String service(String call, String service) {
        if (service == null || SimulatedDevice.catalogue().service(service).isEmpty()) {
            throw new IllegalArgumentException(call + ": unknown service \"" + service + "\"; accepted: "
                    + String.join(", ", services()));
        }
        return service;
    }

    /** {@code "SERVICE.OPERATION"} as the catalogue's operation. */
    static Catalogue.Operation operation(String call, String serviceDotOperation) {
        int dot = serviceDotOperation.indexOf('.');
        if (dot < 0) {
            throw new IllegalArgumentException(call + ": expected SERVICE.OPERATION such as "
                    + "sensors.startSensorSelfTest; services: " + String.join(", ", services()));
        }
        String service = service(call, serviceDotOperation.substring(0, dot));
        Catalogue.Service s = SimulatedDevice.catalogue().service(service).orElseThrow();
        String operation = serviceDotOperation.substring(dot + 1);
        return s.operation(operation).orElseThrow(() -> new IllegalArgumentException(call + ": " + service
                + " has no operation \"" + operation + "\"; accepted: " + String.join(", ", s.operationNames())));
    }

    /** What an answer may be, from the device's own grammar. */
    static String answerForms() {
        Catalogue catalogue = SimulatedDevice.catalogue();
        return "values separated by commas ("
                + catalogue.forms().stream().map(Catalogue.Form::example).collect(Collectors.joining(", ")) + "), "
                + catalogue.keywords().stream()
                        .map(k -> k.word() + (k.callbackOnly() ? " (callback operations only)" : ""))
                        .collect(Collectors.joining(", "));
    }
}
