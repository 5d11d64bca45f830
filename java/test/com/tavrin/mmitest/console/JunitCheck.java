package com.tavrin.mmitest.console;

import com.tavrin.mmitest.sim.LogLine;

import java.nio.file.Path;
import java.util.ArrayList;
import java.util.HashSet;
import java.util.List;
import java.util.Set;

import javax.xml.parsers.DocumentBuilderFactory;

import org.w3c.dom.Document;
import org.w3c.dom.Element;
import org.w3c.dom.Node;

/**
 * The structure CI servers require of a JUnit XML file: testsuites of testsuite of testcase, the
 * counts of every suite and of the whole file agreeing with its test cases, unique named test cases
 * and at most one outcome each.
 */
final class JunitCheck {
    private static final Set<String> OUTCOMES = Set.of("failure", "error", "skipped");
    private static final Set<String> CASE_CHILDREN = Set.of("failure", "error", "skipped", "system-out", "system-err");

    private JunitCheck() {}

    static Document parse(Path file) throws Exception {
        return DocumentBuilderFactory.newInstance().newDocumentBuilder().parse(file.toFile());
    }

    /** Every test case of the file, in order. */
    static List<Element> cases(Document doc) {
        List<Element> cases = new ArrayList<>();
        for (Element suite : children(doc.getDocumentElement())) {
            children(suite).stream().filter(c -> c.getTagName().equals("testcase")).forEach(cases::add);
        }
        return cases;
    }

    /** The properties of every test suite, as name=value, in order. */
    static List<String> properties(Document doc) {
        List<String> properties = new ArrayList<>();
        for (Element suite : children(doc.getDocumentElement())) {
            for (Element p : children(suite)) {
                if (p.getTagName().equals("properties")) {
                    children(p).forEach(e -> properties.add(e.getAttribute("name") + "=" + e.getAttribute("value")));
                }
            }
        }
        return properties;
    }

    /** Everything wrong with the document's structure; empty when a CI server would take it. */
    static List<String> problems(Document doc) {
        List<String> problems = new ArrayList<>();
        Element root = doc.getDocumentElement();
        if (!root.getTagName().equals("testsuites")) {
            problems.add("root is " + root.getTagName());
            return problems;
        }
        int[] total = new int[4];
        Set<String> names = new HashSet<>();
        for (Element suite : children(root)) {
            if (!suite.getTagName().equals("testsuite")) {
                problems.add("testsuites holds " + suite.getTagName());
                continue;
            }
            String where = "testsuite " + suite.getAttribute("name");
            require(problems, !suite.getAttribute("name").isEmpty(), "a testsuite without name");
            require(problems, suite.getAttribute("timestamp").matches("\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d"),
                    where + ": timestamp " + suite.getAttribute("timestamp"));
            seconds(problems, suite, where);
            int[] counted = new int[4];
            List<Element> suiteChildren = children(suite);
            for (int i = 0; i < suiteChildren.size(); i++) {
                Element c = suiteChildren.get(i);
                if (i == 0 && c.getTagName().equals("properties")) {
                    for (Element p : children(c)) {
                        require(problems, p.getTagName().equals("property") && !p.getAttribute("name").isEmpty(),
                                where + ": properties hold " + p.getTagName() + " " + p.getAttribute("name"));
                    }
                    continue;
                }
                if (!c.getTagName().equals("testcase")) {
                    problems.add(where + " holds " + c.getTagName());
                    continue;
                }
                counted[0]++;
                String name = c.getAttribute("classname") + "." + c.getAttribute("name");
                require(problems, !c.getAttribute("name").isEmpty() && !c.getAttribute("classname").isEmpty(),
                        where + ": a testcase without name or classname");
                require(problems, names.add(name), "two test cases named " + name);
                seconds(problems, c, name);
                int outcomes = 0;
                for (Element o : children(c)) {
                    require(problems, CASE_CHILDREN.contains(o.getTagName()), name + " holds " + o.getTagName());
                    if (OUTCOMES.contains(o.getTagName())) {
                        outcomes++;
                        counted[List.of("failure", "error", "skipped").indexOf(o.getTagName()) + 1]++;
                        require(problems, !o.getAttribute("message").isEmpty(), name + ": " + o.getTagName()
                                + " without message");
                    }
                }
                require(problems, outcomes <= 1, name + " has " + outcomes + " outcomes");
            }
            counts(problems, suite, counted, where);
            for (int i = 0; i < 4; i++) {
                total[i] += counted[i];
            }
        }
        counts(problems, root, total, "testsuites");
        return problems;
    }

    private static void counts(List<String> problems, Element e, int[] counted, String where) {
        String[] attrs = {"tests", "failures", "errors", "skipped"};
        for (int i = 0; i < attrs.length; i++) {
            require(problems, e.getAttribute(attrs[i]).equals(String.valueOf(counted[i])),
                    where + ": " + attrs[i] + "=\"" + e.getAttribute(attrs[i]) + "\", counted " + counted[i]);
        }
    }

    private static void seconds(List<String> problems, Element e, String where) {
        require(problems, e.getAttribute("time").matches("\\d+(\\.\\d+)?"), where + ": time " + e.getAttribute("time"));
    }

    private static void require(List<String> problems, boolean ok, String problem) {
        if (!ok) {
            problems.add(problem);
        }
    }

    static List<Element> children(Node parent) {
        List<Element> elements = new ArrayList<>();
        for (Node n = parent.getFirstChild(); n != null; n = n.getNextSibling()) {
            if (n instanceof Element) {
                elements.add((Element) n);
            }
        }
        return elements;
    }

    /** Log lines written as "P TEXT", as a service or the library would log them (no tag). */
    static List<LogLine> logs(String... lines) {
        return java.util.Arrays.stream(lines).map(l -> new LogLine(l.charAt(0), "", l.substring(2))).toList();
    }
}
