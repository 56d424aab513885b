using System;
using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;
using System.Text;

namespace Vqxml
{
    /// <summary>A call of the library failed: Status is its status code (vqxml.h,
    /// docs/status-codes.md), Text the library's text for it ("Method &gt; reason"), decoded
    /// from EUC-KR.</summary>
    public class VqxmlException : Exception
    {
        /// <summary>The signature does not verify (any other status: it could not be checked).</summary>
        public const int NotVerified = 11213;

        public int Status { get; private set; }
        public string Text { get; private set; }

        public VqxmlException(int status, string text) : base(text + " (status " + status + ")")
        {
            Status = status;
            Text = text;
        }
    }

    /// <summary>The native handle; finished exactly once, by Dispose or by the finalizer.</summary>
    public sealed class SafeVqxmlHandle : SafeHandle
    {
        internal SafeVqxmlHandle(IntPtr pointer) : base(IntPtr.Zero, true)
        {
            SetHandle(pointer);
        }

        public override bool IsInvalid { get { return handle == IntPtr.Zero; } }

        protected override bool ReleaseHandle()
        {
            IntPtr pointer = handle;
            Native.VQTK_XMLAPI_Finish(ref pointer);  // the handle is gone whatever it returns
            return true;
        }
    }

    /// <summary>One library handle; every family's class is one. Dispose it (using); one only
    /// dropped is finished by its finalizer. As in C, one handle serves one thread at a time;
    /// calls on one object are serialised by a lock, so misuse cannot corrupt memory, but give
    /// each thread its own handle. Every getter returns a copy, valid after Dispose.</summary>
    public class Handle : IDisposable
    {
        private static readonly Encoding EucKr = EucKrOrUtf8();

        private readonly SafeVqxmlHandle handle;
        protected readonly object Lock = new object();

        public Handle()
        {
            Native.LoadLibrary();
            handle = Open();
        }

        // Kept out of the constructor: Mono binds a method's P/Invokes when it compiles the
        // method, which must come after LoadLibrary.
        [MethodImpl(MethodImplOptions.NoInlining)]
        private static SafeVqxmlHandle Open()
        {
            IntPtr pointer = IntPtr.Zero;
            int status = Native.VQTK_XMLAPI_init(ref pointer);
            if (status != 0)
                throw new VqxmlException(status, "VQTK_XMLAPI_init > the library could not start");
            return new SafeVqxmlHandle(pointer);
        }

        public void Dispose()
        {
            lock (Lock)
                handle.Dispose();
        }

        private static Encoding EucKrOrUtf8()
        {
            try { return Encoding.GetEncoding(51949); }  // I18N.CJK (libmono-i18n-cjk4.0-cil)
            catch (Exception) { return Encoding.UTF8; }
        }

        internal SafeVqxmlHandle Live
        {
            get
            {
                if (handle.IsClosed)
                    throw new ObjectDisposedException("vqxml handle");
                return handle;
            }
        }

        /// <summary>The library's version text, e.g. "V1.0.0.7".</summary>
        public string Version
        {
            get { lock (Lock) return CopyText(Native.VQTK_XMLAPI_GetVersion, Encoding.ASCII); }
        }

        /// <summary>The last failure's text on this handle (kept after later successes).</summary>
        public string ErrorText
        {
            get { lock (Lock) return CopyText(Native.VQTK_XMLAPI_GetErrInfo, EucKr); }
        }

        private delegate int TextCopier(SafeVqxmlHandle h, int len, byte[] text);

        private string CopyText(TextCopier copy, Encoding encoding)
        {
            byte[] text = new byte[1024];
            copy(Live, text.Length - 1, text);
            int len = Array.IndexOf(text, (byte)0);
            return encoding.GetString(text, 0, len);
        }

        internal delegate int Call(SafeVqxmlHandle h);

        /// <summary>Runs one C function; a failure throws with the handle's text. silent: the
        /// statuses for which that function leaves no text.</summary>
        internal void Run(Call call, params int[] silent)
        {
            lock (Lock)
            {
                int status = call(Live);
                if (status == 0)
                    return;
                if (status == 10100 || status == 10102 || Array.IndexOf(silent, status) >= 0)
                    throw new VqxmlException(status, "the input cannot be used or a required argument is missing");
                throw new VqxmlException(status, ErrorText);
            }
        }

        internal byte[] RunForDocument(Call call)
        {
            lock (Lock)
            {
                Run(call);
                return Document();
            }
        }

        /// <summary>The last operation's result document, a copy (null when there is none).</summary>
        public byte[] Document()
        {
            IntPtr doc = IntPtr.Zero;
            int len = 0;
            lock (Lock)
            {
                Run(h => Native.VQTK_XMLAPI_GetXMLDocument(h, out doc, out len));
                return CopyBytes(doc, len);
            }
        }

        internal static byte[] CopyBytes(IntPtr data, int len)
        {
            if (data == IntPtr.Zero)
                return null;
            byte[] copy = new byte[len];
            Marshal.Copy(data, copy, 0, len);
            return copy;
        }

        internal static byte[] CopyText(IntPtr text)
        {
            if (text == IntPtr.Zero)
                return null;
            int len = 0;
            while (Marshal.ReadByte(text, len) != 0)
                ++len;
            return CopyBytes(text, len);
        }

        /// <summary>A text as the C functions take it: UTF-8 and a NUL; null stays null. One with a
        /// NUL of its own would be cut short there, so it is refused.</summary>
        internal static byte[] Z(string text)
        {
            if (text != null && text.IndexOf('\0') >= 0)
                throw new ArgumentException("vqxml: a text with a NUL character");
            return text == null ? null : Encoding.UTF8.GetBytes(text + "\0");
        }

        internal static int Len(byte[] data)
        {
            return data == null ? 0 : data.Length;
        }

        internal static string Utf8(byte[] bytes)
        {
            return bytes == null ? null : Encoding.UTF8.GetString(bytes);
        }

        /// <summary>Issuer, serial and key names come in the process locale's code set, UTF-8 in "C".</summary>
        internal static string Local(byte[] bytes)
        {
            if (bytes == null)
                return null;
            string codeset = Marshal.PtrToStringAnsi(Native.nl_langinfo(14 /* CODESET */));
            try
            {
                if (!string.IsNullOrEmpty(codeset) && codeset != "ANSI_X3.4-1968")
                    return Encoding.GetEncoding(codeset).GetString(bytes);
            }
            catch (ArgumentException) { }
            catch (NotSupportedException) { }
            return Encoding.UTF8.GetString(bytes);
        }
    }

    /// <summary>A family whose loaded document names a key: the signer of a signature or the
    /// recipient of an encrypted key. The getters report what the last operation read (null
    /// where there was none).</summary>
    public abstract class KeyInfoHandle : Handle
    {
        internal delegate int TextGetter(SafeVqxmlHandle h, out IntPtr text);
        internal delegate int PairGetter(SafeVqxmlHandle h, out IntPtr first, out IntPtr second);
        internal delegate int BytesGetter(SafeVqxmlHandle h, out IntPtr data, out int len);

        private readonly TextGetter subject, keyName;
        private readonly PairGetter issuerSerial;
        private readonly BytesGetter certificate;

        internal KeyInfoHandle(TextGetter subject, PairGetter issuerSerial, TextGetter keyName, BytesGetter certificate)
        {
            this.subject = subject;
            this.issuerSerial = issuerSerial;
            this.keyName = keyName;
            this.certificate = certificate;
        }

        internal byte[] GetText(TextGetter getter)
        {
            IntPtr text = IntPtr.Zero;
            lock (Lock)
            {
                Run(h => getter(h, out text));
                return CopyText(text);
            }
        }

        private string[] IssuerAndSerial()
        {
            IntPtr issuer = IntPtr.Zero, serial = IntPtr.Zero;
            lock (Lock)
            {
                Run(h => issuerSerial(h, out issuer, out serial));
                return new[] { Local(CopyText(issuer)), Local(CopyText(serial)) };
            }
        }

        /// <summary>The subject name as the library writes names (most specific first).</summary>
        public string SubjectName { get { return Utf8(GetText(subject)); } }
        public string IssuerName { get { return IssuerAndSerial()[0]; } }
        public string SerialNumber { get { return IssuerAndSerial()[1]; } }
        public string KeyName { get { return Local(GetText(keyName)); } }

        /// <summary>The certificate, DER.</summary>
        public byte[] Certificate
        {
            get
            {
                IntPtr data = IntPtr.Zero;
                int len = 0;
                lock (Lock)
                {
                    Run(h => certificate(h, out data, out len));
                    return CopyBytes(data, len);
                }
            }
        }
    }
}
