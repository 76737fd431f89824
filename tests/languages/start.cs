// Runs the page's program under .NET, with what the tests put in the place of Windows, and then calls that it does not make.
using System;
using System.IO;
using System.Reflection;
using System.Runtime.InteropServices;
using System.Text;
using VetrelCorvaneLib;

static class Start
{
    [DllImport("kernel32", CharSet = CharSet.Unicode, SetLastError = true)]
    static extern IntPtr LoadLibrary(string path);

    static string Failure(Action call)
    {
        try { call(); return "none"; }
        catch (Exception error) { return error.HResult.ToString("X8"); }
    }

    // arguments: the stand-in's path, then those of the page's program
    [STAThread]
    static int Main(string[] arguments)
    {
        Console.SetOut(new StreamWriter(Console.OpenStandardOutput(), new UTF8Encoding(false)) { AutoFlush = true });
        if (LoadLibrary(arguments[0]) == IntPtr.Zero) throw new Exception(arguments[0] + ": error " + Marshal.GetLastWin32Error());
        string[] own = { arguments[1], arguments[2] };
        MethodInfo main = typeof(Program).GetMethod("Main", BindingFlags.Static | BindingFlags.NonPublic);
        object status = main.Invoke(null, new object[] { own });

        IBinaryObjectService bytes = Corvane.InProgram<IBinaryObjectService>((IBinaryObjectService)Corvane.Create("BinaryObjectService"));
        ICryptoService crypto = Corvane.InProgram<ICryptoService>(new CryptoService());
        IBinaryObject data = bytes.BinaryObjectFromFile(own[0]);
        ICertificate signer = crypto.GetCertificates("{\"storeName\": \"My\", \"hasPrivateKeyOnly\": true}")[0];
        IBinaryObject signature = crypto.Sign(data, signer);
        Console.WriteLine("untold: " + Failure(() => new BinaryObjectService().CreateStream()));
        Console.WriteLine("not hexadecimal: " + Failure(() => bytes.BinaryObjectFromHex("4 8")));
        Console.WriteLine("an array: " + ((object[])data.ToArray(1, 1))[0]);
        foreach (object certificates in new object[] { signer, new object[] { signer }, new ICertificate[] { signer }, null, Type.Missing })
            Console.Write(crypto.VerifySignature(data, signature, certificates).count);
        Console.WriteLine(" " + signer.ValidTo.Kind);

        Callback digest = new Callback();
        bytes.GetSHA256Async(data, digest);
        Console.WriteLine(((IBinaryObject)digest.Wait()).ToHexString());
        OperationToken token = new OperationToken();
        token.SetCanceled();
        Callback canceled = new Callback();
        bytes.GetSHA256StreamAsync(bytes.CreateStream(), canceled, token);
        try { canceled.Wait(); }
        catch (InvalidOperationException error) { Console.WriteLine(error.Message); }
        return (int)status;
    }
}
