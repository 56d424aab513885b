// The cases every binding shares (bindings/cases.tsv, whose head tells how they read), and what
// is C#'s own: handles and results across P/Invoke freed, many threads, handles left to the finalizer.
using System;
using System.Collections;
using System.Collections.Generic;
using System.IO;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;
using System.Text;
using System.Text.RegularExpressions;
using System.Threading.Tasks;
using NUnit.Framework;
using Vqxml;

[TestFixture]
public class BindingTests
{
    static readonly Dictionary<string, Type> Refusals = new Dictionary<string, Type> {
        { "arg", typeof(ArgumentException) }, { "closed", typeof(ObjectDisposedException) } };
    static readonly Encoding Latin1 = Encoding.GetEncoding(28591);
    static readonly string Table = Environment.GetEnvironmentVariable("VQXML_BINDING_CASES") ?? "bindings/cases.tsv";
    static readonly string DataDir = Environment.GetEnvironmentVariable("VQXML_TEST_DATA") ?? "tests/data";
    static readonly Dictionary<string, List<string[]>> Cases = new Dictionary<string, List<string[]>>();

    static BindingTests()
    {
        List<string[]> current = null;
        foreach (string line in File.Exists(Table) ? File.ReadAllLines(Table, Encoding.UTF8) : new string[0])
        {
            string[] f = line.Split('\t');
            if (f[0] == "case")
                Cases[f[1]] = current = new List<string[]> { f };
            else if (line != "" && !line.StartsWith("#"))
                current.Add(f);
        }
    }

    public static IEnumerable<string> SharedCases
    {
        get { return File.Exists(Table) ? (IEnumerable<string>)Cases.Keys : new[] { "test input missing: " + Table }; }
    }

    [Test, TestCaseSource("SharedCases")]
    public void Run(string id)
    {
        if (!Cases.ContainsKey(id))
            Assert.Fail("no case " + id);
        var values = new Dictionary<string, object>();
        try
        {
            foreach (string[] named in Cases[id][0].Skip(2).Select(h => h.Split('=')))
                values[named[0]] = Activator.CreateInstance(typeof(Handle).Assembly.GetType("Vqxml." + named[1]));
            foreach (string[] step in Cases[id].Skip(1))
                Step(step, values);
        }
        finally
        {
            foreach (var handle in values.Values.OfType<Handle>())
                handle.Dispose();
        }
    }

    static void Step(string[] f, Dictionary<string, object> values)
    {
        int at = 2;
        while (at < f.Length && !new[] { "=>", "==", "~~", "!~", "!!" }.Contains(f[at]))
            ++at;
        string check = at < f.Length ? f[at] : "", where = string.Join(" ", f);
        object result;
        try
        {
            result = Call(f, at, values);
        }
        catch (TargetInvocationException e)
        {
            if (check != "!!")
                throw new Exception(where, e.InnerException);
            string text = f.Length > at + 2 ? f[at + 2] : "";
            Assert.IsTrue(RefusedAs(e.InnerException, f[at + 1], text), where + ": " + e.InnerException);
            return;
        }
        Assert.AreNotEqual("!!", check, where + ": succeeded");
        if (check == "=>")
            values[f[at + 1]] = result;
        else if (check != "")
        {
            string actual = Norm(result), wanted = Norm(Arg(f[at + 1], typeof(string), values));
            bool holds = check == "==" ? wanted == actual : actual.Contains(wanted) == (check == "~~");
            Assert.IsTrue(holds, where + " (was " + actual + ")");
        }
    }

    static object Call(string[] f, int at, Dictionary<string, object> values)
    {
        if (f[0] == "-")  // replace or concat, on the bytes
        {
            string[] p = f.Skip(2).Take(at - 2).Select(a => Norm(Arg(a, typeof(byte[]), values))).ToArray();
            Assert.IsTrue(f[1] == "concat" || p[0].Contains(p[1]), string.Join(" ", f));
            return Latin1.GetBytes(f[1] == "concat" ? string.Concat(p) : p[0].Replace(p[1], p[2]));
        }
        object target = values[f[0]];
        string name = f[1] == "close" ? "Dispose" : f[1];  // a getter is a property here
        MethodInfo method = target.GetType().GetMethods().FirstOrDefault(
            m => (Same(m.Name, name) || Same(m.Name, "get" + name)) && m.GetParameters().Length == at - 2);
        if (method == null)
            Assert.Fail("no method for " + string.Join(" ", f));
        object[] args = method.GetParameters().Select((p, i) => Arg(f[i + 2], p.ParameterType, values)).ToArray();
        return method.Invoke(target, args);
    }

    // Whether e is the binding's own refusal named, or the library's status with its text.
    static bool RefusedAs(Exception e, string status, string text)
    {
        if (Refusals.ContainsKey(status))
            return Refusals[status].IsInstanceOfType(e);
        var x = e as VqxmlException;
        int wanted = status.All(char.IsDigit) ? int.Parse(status) : (int)Constant(typeof(VqxmlException), status);
        return x != null && x.Status == wanted && x.Text.Contains(text) && (x.Text.Contains(" > ") || wanted == 10104);
    }

    static object Arg(string a, Type type, Dictionary<string, object> values)
    {
        string[] parts = a.Split('.');
        if (a == "null")
            return null;
        if (a.StartsWith("@"))
            return values.ContainsKey(a.Substring(1)) ? values[a.Substring(1)] : Data(a.Substring(1));
        if (Regex.IsMatch(a, @"^[A-Z]\w*\.[A-Z][A-Z0-9_]*$"))
            return type.IsEnum ? Enum.Parse(type, parts[1].Replace("_", ""), true)
                               : Constant(typeof(Handle).Assembly.GetType("Vqxml." + parts[0]), parts[1]);
        string text = Regex.Replace(a.Replace("\\r", "\r").Replace("\\n", "\n").Replace("\\0", "\0"), "^b:", "");
        return type == typeof(byte[]) ? (object)Encoding.UTF8.GetBytes(text) : text;
    }

    static object Constant(Type holder, string name)
    {
        const BindingFlags flags = BindingFlags.Public | BindingFlags.Static | BindingFlags.IgnoreCase;
        return holder.GetField(name.Replace("_", ""), flags).GetValue(null);
    }

    static bool Same(string member, string name)
    {
        return string.Equals(member.Replace("_", ""), name.Replace("_", ""), StringComparison.OrdinalIgnoreCase);
    }

    static byte[] Data(string name)
    {
        string path = Path.Combine(DataDir, name);
        if (!File.Exists(path))
            Assert.Fail("test input missing: " + path);
        return File.ReadAllBytes(path);
    }

    // Any result or expectation as the bytes it stands for, one character each; true and enum
    // names as Java and Python write them.
    static string Norm(object value)
    {
        if (value is byte[])
            return Latin1.GetString((byte[])value);
        if (value is IEnumerable<string>)
            value = string.Join(" ", (IEnumerable<string>)value);
        if (value is bool || value is Enum)
            value = value is bool ? value.ToString().ToLowerInvariant() : value.ToString().ToUpperInvariant();
        return Latin1.GetString(Encoding.UTF8.GetBytes(value == null ? "null" : value.ToString()));
    }

    [DllImport("libc.so.6")]
    static extern MallInfo2 mallinfo2();

    [StructLayout(LayoutKind.Sequential)]
    struct MallInfo2
    {
        public UIntPtr Arena, Ordblks, Smblks, Hblks, Hblkhd, Usmblks, Fsmblks, Uordblks, Fordblks, Keepcost;
    }

    /// Handles are finished and results copied, not kept: over rounds of the signature and
    /// encryption cases, malloc does not grow in every stretch of 50 rounds, as a handle or
    /// result left behind each round would make it.
    [Test]
    public void RoundsAcrossTheBoundaryLeaveNothingBehind()
    {
        var marks = new List<long>();
        using (new Certificates())  // so that the engines stay up
            for (int round = 0; round <= 400; ++round)
            {
                if (round % 50 == 0 && round >= 100)
                    marks.Add((long)(mallinfo2().Uordblks.ToUInt64() + mallinfo2().Hblkhd.ToUInt64()));
                Run("tax_invoice");
                Run("encrypted_for_one_recipient");
            }
        long least = marks.Zip(marks.Skip(1), (a, b) => b - a).Min();
        Assert.Less(least, 64 << 10, "malloc grew by at least " + least + " bytes in every 50 rounds");
    }

    [Test]
    public void CasesOnManyThreadsAndHandlesLeftToTheFinalizer()
    {
        // Eight threads of their own; a failure on any comes back from WaitAll.
        Action signing = () => Enumerable.Range(0, 25).ToList().ForEach(i => Run("tax_invoice"));
        Task.WaitAll(Enumerable.Range(0, 8)
            .Select(t => Task.Factory.StartNew(signing, TaskCreationOptions.LongRunning)).ToArray());
        using (new Certificates())  // so that the engines stay up
            for (int i = 0; i < 5000; ++i)
            {
                Run("fresh_handles");
                Assert.IsTrue(new Certificates().Version.StartsWith("V"));
            }
        GC.Collect();
        GC.WaitForPendingFinalizers();
    }
}
